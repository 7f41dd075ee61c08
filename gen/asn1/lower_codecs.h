// The codecs of a schema's types.
#pragma once

#include "asn1/layout.h"
#include "model/per.h"

namespace solvane::gen::asn1 {

/// Appends a codec for every item, in their order.  `schema_id` is the family's place in the plan.
void add_codecs(diagnostics &diag, const schema &s, const family &f, const layout &types, std::uint32_t schema_id,
                per::plan &plan);

} // namespace solvane::gen::asn1
