// The loaded plug-in, reached through its five exports and through nothing else.
//
// Loading and starting are two steps because the service record may be read, and its slots replaced, in between.
#pragma once

#include <string>
#include <vector>

#include "solvane/solvane.h"

namespace solvane::tools {

struct plugin {
    std::string              path; ///< as handed to the loader
    dll_info_struct         *info = nullptr;
    dll_info_version_struct *version = nullptr;
    tt_peer_table_struct    *peers = nullptr;
    void                   (*init)() = nullptr;
    void                   (*deinit)() = nullptr;
};

/// The places where the library is looked for when no one names it, best first: next to the tool, `lib` and
/// `lib/solvane` beside the tool's folder, and last what the loader finds by the bare name.
std::vector<std::string> standard_places();

/// Loads `wanted`; when that is empty $SOLVANE_LIB, else the first of the standard places that exists.
/// Throws `failure`: exit_cannot_open when there is no such library or an export is missing, exit_mismatch when
/// its interface is of another version.
plugin load_plugin(const std::string &wanted);

/// Runs `init_dll` and looks at what every host relies on.  Throws `failure` (exit_mismatch).
void start_plugin(const plugin &loaded);

} // namespace solvane::tools
