// Lays the trace table.
#include "model/traces.h"

#include <utility>

namespace solvane::gen {

void lay_traces(model &m)
{
    std::vector<std::vector<trace_item>> by_module(m.trace_modules.size());
    for (trace_item &item : m.traces)
        by_module[item.id / ids_of_a_module].push_back(std::move(item));

    m.traces.clear();
    for (std::uint32_t module = 0; module < by_module.size(); ++module) {
        std::uint32_t id = module * ids_of_a_module;
        // The head of the first module carries no name: the text of id 0 is empty.
        m.traces.push_back({id, module == 0 ? "" : m.trace_modules[module], trace_head, "", 0});
        for (trace_item &item : by_module[module]) {
            item.id = ++id;
            m.traces.push_back(std::move(item));
        }
    }
    m.traces.push_back({0xFFFFFFFF, "", trace_last, "", 0});
}

} // namespace solvane::gen
