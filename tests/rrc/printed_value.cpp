// A printed value taken apart again.
#include "printed_value.h"

#include <cctype>

#include <gtest/gtest.h>

namespace solvane::test {

namespace {

/// The words of the text: names, values, "[" for a list, "{" for a sequence, "}".
std::vector<std::string> words_of(std::string_view text)
{
    constexpr std::string_view list = "{ -- SEQUENCE OF -- ", sequence = "{ -- SEQUENCE --";
    std::vector<std::string>   words;
    while (!text.empty()) {
        if (text.front() == ' ' || text.front() == '\n' || text.front() == ',') {
            text.remove_prefix(1);
        } else if (text.starts_with(list)) {
            words.emplace_back("[");
            text.remove_prefix(list.size());
        } else if (text.starts_with(sequence)) {
            words.emplace_back("{");
            text.remove_prefix(sequence.size());
        } else {
            const std::size_t end = std::min(text.find_first_of(" ,\n"), text.size());
            words.emplace_back(text.substr(0, end));
            text.remove_prefix(end);
        }
    }
    return words;
}

struct walker {
    std::vector<std::string>  words;
    std::size_t               at = 0;
    std::vector<printed_item> items;

    bool is(std::string_view word) const { return at < words.size() && words[at] == word; }

    void value(const std::string &name)
    {
        if (at >= words.size()) {
            ADD_FAILURE() << "the text ends behind " << name;
        } else if (is("{")) {
            for (++at; at < words.size() && !is("}");) {
                const std::string member = words[at++];
                value(member);
            }
            ++at;
        } else if (is("[")) {
            elements(name);
        } else if (std::islower(static_cast<unsigned char>(words[at][0])) != 0) {
            const std::string alternative = words[at++];
            items.push_back({printed_item::what::selector, name, alternative});
            value(alternative);
        } else {
            items.push_back({printed_item::what::leaf, name, words[at++]});
        }
    }

    void elements(const std::string &name)
    {
        const std::size_t place = items.size();
        items.push_back({printed_item::what::count, name, ""});
        std::size_t count = 0;
        for (++at; at < words.size() && !is("}"); ++count)
            value("*" + name);
        ++at;
        items[place].text = std::to_string(count);
    }
};

} // namespace

std::vector<printed_item> take_apart(std::string_view text)
{
    walker w{words_of(text), 0, {}};
    w.value("");
    EXPECT_EQ(w.at, w.words.size());
    return w.items;
}

} // namespace solvane::test
