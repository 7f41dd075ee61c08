// The schema families.
#include "asn1/family.h"

namespace solvane::gen::asn1 {

const family *family_of(std::string_view domain)
{
    // The file codes are those that allocation tags of the families carry: of the decoders, of the free functions.
    static const family umts = {{"umts", "", 4590, 4587, true}, true};
    static const family lte = {{"lte", "Lte_", 1708, 1706, false}, false};
    static const family nr = {{"nr", "Nr_", 2849, 2894, false}, false};
    for (const family *f : {&umts, &lte, &nr}) {
        if (f->rules.name == domain)
            return f;
    }
    return nullptr;
}

} // namespace solvane::gen::asn1
