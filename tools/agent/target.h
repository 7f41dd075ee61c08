// The simulated target behind the agent: what it answers to the host's commands.
//
// It has no stack.  A variable holds what was written to it, else octets that follow from its place; a function hands
// its argument back; an injected message comes out as traced.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "dictionary.h"
#include "image.h"
#include "target_layout.h"
#include "wire_form.h"

namespace solvane::tools {

class target {
public:
    /// `baseline` is what the target says its stack is built of.
    target(const plugin &loaded, const target_layout &layout, std::string baseline);

    /// The packets that answer a command; a command that it does not know or cannot read gets MTA_TT_ERROR.
    std::vector<octets> answer(const octets &command);
    /// Whether a command asked for the end of the connection.
    bool                leave() const { return leave_; }

private:
    std::optional<wire_form> form_of(const char *structure) const;
    std::vector<octets> bare_answer(std::uint8_t code);
    octets              variables(std::uint8_t code, const value_node &request);
    octets              variable(const value_node &request, std::uint64_t size);
    void                set_variable(const value_node &request);
    std::vector<octets> injected(const value_node &request);
    octets              called(std::span<const std::uint8_t> body, bool &whole);
    octets              profile() const;
    octets              result(std::uint8_t code, std::uint32_t value) const;
    octets              text(std::uint8_t code, const std::string &value) const;

    const plugin                                  &loaded_;
    const target_layout                           &layout_;
    std::string                                    baseline_;
    std::vector<domain>                            domains_;
    std::map<std::vector<std::uint64_t>, octets>   written_; ///< variables by their way from the root
    bool                                           leave_ = false;
};

} // namespace solvane::tools
