// Lowers checked ASN.1 modules: to definitions, as a unit of the definition language has them, and to codecs.
//
// The definitions go on through the checker and the lowering of the definition language, so that records, dictionary,
// messages, value texts and peer rows know ASN.1 types like any other.  The codecs go beside them into the model.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "asn1/family.h"
#include "asn1/tree.h"
#include "base/diagnostics.h"
#include "def/tree.h"
#include "model/per.h"

namespace solvane::gen::asn1 {

/// The unit that every schema unit imports: AsnInt and its like.
inline constexpr std::string_view value_types_unit = "common/asn_types.def";

struct lowered {
    std::vector<def::unit_def> units;
    per::plan                  plan;  ///< `unit` of a codec and of unit_codecs is an index into `units`
};

/// How many units a domain's schema becomes: one for each 24 KiB of its files, so that this is known without reading
/// them.
std::uint32_t no_parts(std::size_t octets);

/// Adds the types of a domain's schema to `out`, in `parts` units `<domain>_rrc_NN`.
void lower(diagnostics &diag, schema &s, const family &f, std::uint32_t parts, lowered &out);

/// Turns the units of a plan into those of the model, which bear their stems.
void bind_units(const lowered &from, model &m);

} // namespace solvane::gen::asn1
