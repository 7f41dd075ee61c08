#include "plugin.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <dlfcn.h>
#include <fmt/format.h>

#include "failure.h"

namespace solvane::tools {

namespace {

constexpr const char *library_name = "libsolvane.so";
constexpr const char *interface_text = "1.0";
constexpr unsigned    interface_number = 1;

std::filesystem::path tool_folder()
{
    std::error_code error;
    const auto      tool = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : tool.parent_path();
}

std::string find_library(const std::string &wanted)
{
    if (!wanted.empty()) {
        return wanted;
    }
    if (const char *chosen = std::getenv("SOLVANE_LIB"); chosen != nullptr && *chosen != '\0') {
        return chosen;
    }
    for (const auto &place : standard_places()) {
        std::error_code error;
        if (std::filesystem::exists(place, error)) {
            return place;
        }
    }
    return library_name;
}

/* The loader searches its own path for a name without a slash; someone who types one means a file. */
std::string as_file(const std::string &path)
{
    std::error_code error;
    const bool      bare = path.find('/') == std::string::npos;
    return bare && std::filesystem::exists(path, error) ? "./" + path : path;
}

void *open_library(const std::string &path)
{
    void *handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char *reason = ::dlerror();
        throw failure(exit_cannot_open,
                      fmt::format("cannot load the plug-in: {}", reason != nullptr ? reason : path));
    }
    return handle;
}

template <class T> void take_export(void *handle, const std::string &path, const char *name, T *&place)
{
    void *const symbol = ::dlsym(handle, name);
    if (symbol == nullptr) {
        throw failure(exit_cannot_open, fmt::format("{} is no Solvane plug-in: it does not export {}", path, name));
    }
    place = reinterpret_cast<T *>(symbol);
}

void check_interface(const plugin &loaded)
{
    const auto &version = *loaded.version;
    const char *text = version.version_text != nullptr ? version.version_text : "";
    if (version.version_number != interface_number || std::strcmp(text, interface_text) != 0) {
        throw failure(exit_mismatch,
                      fmt::format("{} offers interface \"{}\" number {}; this tool knows \"{}\" number {}",
                                  loaded.path, text, version.version_number, interface_text, interface_number));
    }
}

} // namespace

std::vector<std::string> standard_places()
{
    const auto folder = tool_folder();
    if (folder.empty()) {
        return {};
    }
    const auto beside = folder.parent_path();
    return {folder / library_name, beside / "lib" / library_name, beside / "lib" / "solvane" / library_name};
}

plugin load_plugin(const std::string &wanted)
{
    plugin loaded;
    loaded.path = as_file(find_library(wanted));
    void *const handle = open_library(loaded.path); /* stays loaded until the process ends */
    take_export(handle, loaded.path, "init_dll", loaded.init);
    take_export(handle, loaded.path, "deinit_dll", loaded.deinit);
    take_export(handle, loaded.path, "dll_info", loaded.info);
    take_export(handle, loaded.path, "dll_info_version", loaded.version);
    take_export(handle, loaded.path, "tt_peer_table", loaded.peers);
    check_interface(loaded);
    return loaded;
}

void start_plugin(const plugin &loaded)
{
    loaded.init();
    const auto &info = *loaded.info;
    const auto  demand = [&](bool kept, const char *what) {
        if (!kept) {
            throw failure(exit_mismatch, fmt::format("{} breaks its interface: {}", loaded.path, what));
        }
    };
    demand(info.no_entities == ENTITY_LAST, "it does not have ten registry rows");
    demand(info.entity_info != nullptr, "it has no domain registry");
    demand(info.tool_offsize != nullptr && info.tool_offsize->count == TT_NO_DOMAINS, "it has no eight dictionaries");
    demand(info.tool_offsize->records != nullptr, "its dictionaries are missing");
    demand(info.tsc_db_get != nullptr && info.tsc_db_get() != nullptr, "it has no trace table");
    demand(info.reserved_6 == 0 && info.reserved_9 == 0 && info.reserved_44 == 0 && info.reserved_45 == 0,
           "a reserved slot is not 0");
}

} // namespace solvane::tools
