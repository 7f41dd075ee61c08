// The emitters: everything that a stack build supplies, printed as C++.
//
// An emitter spells the model out and decides nothing that the host could see.  Each family of outputs has a file
// of its own here; all of them append to one list of files.
#pragma once

#include <vector>

#include "base/output.h"
#include "model/model.h"

namespace solvane::gen {

/// All generated files, their paths from the output folder with '/' between the parts.  Same model, same octets.
std::vector<output_file> emit_all(const model &m);

// ------------------------------------------------------------------------------------------- emitter families

void emit_records(const model &m, std::vector<output_file> &files);    ///< <stem>.h of every unit
void emit_dictionary(const model &m, std::vector<output_file> &files); ///< <domain>_types.cpp, _structs.cpp
void emit_layout(const model &m, std::vector<output_file> &files);     ///< <domain>_layout.cpp
void emit_messages(const model &m, std::vector<output_file> &files);   ///< <domain>_messages.cpp
void emit_values(const model &m, std::vector<output_file> &files);     ///< <domain>_values.cpp
void emit_codecs(const model &m, std::vector<output_file> &files);     ///< <stem>_codec.h, _pack.cpp, tt_…_rest.cpp
void emit_peers(const model &m, std::vector<output_file> &files);      ///< <domain>_peers.cpp, peer_rows.cpp
void emit_record_sizes(const model &m, std::vector<output_file> &files); ///< <schema>_record_sizes.cpp, where told
void emit_registry(const model &m, std::vector<output_file> &files);   ///< what ties the domains together
void emit_traces(const model &m, std::vector<output_file> &files);     ///< tsc_db.cpp

} // namespace solvane::gen
