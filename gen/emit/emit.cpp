// The list of the emitter families.
#include "emit/emit.h"

#include "emit/per.h"

namespace solvane::gen {

std::vector<output_file> emit_all(const model &m)
{
    std::vector<output_file> files;
    emit_records(m, files);
    emit_dictionary(m, files);
    emit_layout(m, files);
    emit_messages(m, files);
    emit_values(m, files);
    emit_codecs(m, files);
    per::emit_codecs(m.codecs, m.units, files);
    emit_peers(m, files);
    emit_record_sizes(m, files);
    emit_registry(m, files);
    emit_traces(m, files);
    return files;
}

} // namespace solvane::gen
