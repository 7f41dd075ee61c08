#include "wire_value.h"

#include <algorithm>

#include "words.h"

namespace solvane::tools {

namespace {

class form_reader {
public:
    form_reader(const plugin &loaded, std::span<const std::uint8_t> body) : loaded_(loaded), body_(body) {}

    value_node   record(const wire_form &form);
    wire_reading result(value_node value) const { return {std::move(value), at_, short_}; }

private:
    value_node field(const wire_form &form, const wire_field &field, const std::vector<std::uint64_t> &numbers);
    value_node array(const wire_form &form, const wire_field &field, std::uint64_t count);
    value_node number(const wire_form &form, const wire_field &field);
    std::span<const std::uint8_t> take(std::uint64_t size);

    const plugin                 &loaded_;
    std::span<const std::uint8_t> body_;
    std::size_t                   at_ = 0;
    bool                          short_ = false;
};

/* Once it ran short nothing more is read. */
std::span<const std::uint8_t> form_reader::take(std::uint64_t size)
{
    if (short_ || size > body_.size() - at_) {
        short_ = true;
        return {};
    }
    const auto taken = body_.subspan(at_, static_cast<std::size_t>(size));
    at_ += taken.size();
    return taken;
}

value_node form_reader::number(const wire_form &form, const wire_field &field)
{
    value_node node;
    node.type = field.type.name;
    const auto octets = take(field.size);
    if (octets.empty()) {
        node.form = shape::cut;
        return node;
    }
    std::uint64_t value = 0;
    for (const std::uint8_t octet : octets) {
        value = value << 8 | octet;
    }
    node.number = static_cast<std::int64_t>(value);
    if (field.type.kind == RW_KIND_ENUM) {
        const rw_literal_row *literal = find_literal(enum_row(*form.in, field.type), node.number);
        node.literal = literal != nullptr ? literal->name : "";
    }
    node.words = words_of(loaded_, *form.in, std::string(form.name).c_str(), field.row->name,
                          static_cast<std::uint32_t>(value));
    return node;
}

value_node form_reader::array(const wire_form &form, const wire_field &field, std::uint64_t count)
{
    value_node node;
    node.type = field.type.name;
    if (field.size == 1) {
        const auto octets = take(count);
        node.form = short_ ? shape::cut : shape::octets;
        node.bytes.assign(octets.begin(), octets.end());
        const bool clean =
            std::all_of(octets.begin(), octets.end(), [](std::uint8_t b) { return b >= 0x20 && b < 0x7F; });
        node.words = clean ? std::string(octets.begin(), octets.end()) : "";
        return node;
    }
    node.form = shape::list;
    const std::uint64_t end = at_ + count; /* where `count` is one of octets */
    for (std::uint64_t i = 0; (field.count_is_octets ? at_ < end : i < count) && !short_; ++i) {
        node.children.push_back(field.inside.empty() ? number(form, field) : record(field.inside.front()));
    }
    return node;
}

value_node form_reader::field(const wire_form &form, const wire_field &field, const std::vector<std::uint64_t> &numbers)
{
    value_node node;
    if (field.present_by != wire_field::none && numbers[field.present_by] == 0) {
        node.form = shape::absent;
    } else if (field.is_message) {
        node.form = shape::cut;
        short_ = true;
    } else if (field.is_array) {
        node = array(form, field, field.counted_by != wire_field::none ? numbers[field.counted_by] : field.fixed);
    } else {
        node = field.inside.empty() ? number(form, field) : record(field.inside.front());
    }
    node.name = field.row->name;
    return node;
}

value_node form_reader::record(const wire_form &form)
{
    value_node out;
    out.type = form.name;
    out.form = shape::record;
    std::vector<std::uint64_t> numbers; /* by field, 0 where there is none */
    for (const auto &each : form.fields) {
        out.children.push_back(field(form, each, numbers));
        numbers.push_back(static_cast<std::uint64_t>(out.children.back().number));
    }
    return out;
}

} // namespace

wire_reading read_wire(const plugin &loaded, const wire_form &form, std::span<const std::uint8_t> body)
{
    form_reader reader(loaded, body);
    value_node  value = reader.record(form);
    return reader.result(std::move(value));
}

} // namespace solvane::tools
