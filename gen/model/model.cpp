// Spellings of types.
#include "model/model.h"

namespace solvane::gen {

std::string_view basic_name(kind base)
{
    switch (base) {
    case kind::unsigned_long: return "unsigned long";
    case kind::signed_long: return "long";
    case kind::unsigned_int: return "unsigned int";
    case kind::signed_int: return "int";
    case kind::unsigned_short: return "unsigned short";
    case kind::signed_short: return "short";
    case kind::unsigned_char: return "unsigned char";
    case kind::plain_char: return "char";
    case kind::signed_char: return "signed char";
    case kind::nothing: return "void";
    case kind::structure:
    case kind::union_:
    case kind::enumeration:
    case kind::type_name:
    case kind::bit_field: break;
    }
    return {};
}

std::string cpp_type(const model &m, const type_use &use)
{
    switch (use.base) {
    case kind::unsigned_long: return "uint32_t"; // 32 bits on every build
    case kind::signed_long: return "int32_t";
    case kind::structure:
    case kind::union_: return m.records[use.id].name;
    case kind::enumeration: {
        const enumeration &e = m.enums[use.id];
        return e.name.empty() ? m.aliases[e.alias_id].name : e.name;
    }
    case kind::type_name: return m.aliases[use.id].name;
    case kind::unsigned_int:
    case kind::signed_int:
    case kind::unsigned_short:
    case kind::signed_short:
    case kind::unsigned_char:
    case kind::plain_char:
    case kind::signed_char:
    case kind::nothing:
    case kind::bit_field: break;
    }
    return std::string(basic_name(use.base));
}

} // namespace solvane::gen
