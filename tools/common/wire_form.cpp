#include "wire_form.h"

#include <algorithm>

#include "agent_packet.h"

namespace solvane::tools {

namespace {

constexpr std::string_view message_struct = "tt_msg_struct";
constexpr std::string_view statistics_struct = "mta_tt_task_profiling_stats"; /* its entries are counted in octets */
constexpr std::string_view task_struct = "mta_tt_task_stats";                 /* its name stands behind its length */

/* `x_size` beside a counted pointer `x`: how many elements the array has room for, no business of the other end's. */
bool is_capacity(const rw_struct_row &row, const rw_member_row &member)
{
    for (std::uint32_t i = 0; i < row.no_members; ++i) {
        const rw_member_row &other = row.members[i];
        const bool counted = other.role == RW_ROLE_POINTER && other.ref != RW_NO_REF;
        if (counted && member.name == std::string(other.name) + "_size") {
            return true;
        }
    }
    return false;
}

/* Where the member with that number in the structure stands among the fields. */
std::size_t field_of(const wire_form &form, const rw_struct_row &row, std::uint32_t member)
{
    for (std::size_t i = 0; i < form.fields.size(); ++i) {
        if (form.fields[i].row == &row.members[member]) {
            return i;
        }
    }
    return wire_field::none;
}

bool set_shape(const domain &in, const rw_struct_row &row, const rw_member_row &member, const wire_form &so_far,
               wire_field &field)
{
    const auto levels = levels_of(in, field.type);
    if (member.role == RW_ROLE_OPTIONAL && member.ref < row.no_members) {
        field.present_by = field_of(so_far, row, member.ref);
    }
    if (levels.empty()) {
        return true;
    }
    field.is_array = levels.size() == 1;
    if (levels[0].pointer) {
        field.counted_by = member.ref < row.no_members ? field_of(so_far, row, member.ref) : wire_field::none;
        return field.is_array && field.counted_by != wire_field::none;
    }
    field.fixed = static_cast<std::size_t>(levels[0].count);
    return field.is_array;
}

bool set_content(const domain &in, wire_field &field)
{
    if (field.type.is_record()) {
        field.is_message = struct_row(in, field.type).name == message_struct;
        const auto inside = wire_form_of(in, field.type.name);
        if (inside) {
            field.inside.push_back(*inside);
        }
        return field.is_message || inside.has_value();
    }
    field.size = static_cast<unsigned>(size_of(in, field.type, field.type.dims.size()));
    return field.type.kind != RW_KIND_VOID && field.size >= 1 && field.size <= 8;
}

/* Where the two structures depart from their declaration. */
void depart(wire_form &form)
{
    for (std::size_t i = 0; i < form.fields.size(); ++i) {
        wire_field &field = form.fields[i];
        if (field.counted_by == wire_field::none) {
            continue;
        }
        field.count_is_octets = form.name == statistics_struct;
        if (form.name == task_struct) {
            const auto begin = form.fields.begin();
            const auto behind = begin + static_cast<std::ptrdiff_t>(field.counted_by) + 1;
            std::rotate(behind, begin + static_cast<std::ptrdiff_t>(i), begin + static_cast<std::ptrdiff_t>(i) + 1);
            return;
        }
    }
}

void write_array(octets &out, const wire_field &field, const wire_value *value);
void write_record(octets &out, const wire_form &form, const wire_record &values);

std::size_t elements_of(const wire_value &value)
{
    if (const auto *numbers = std::get_if<std::vector<std::uint64_t>>(&value.is)) {
        return numbers->size();
    }
    const auto *records = std::get_if<std::vector<wire_record>>(&value.is);
    return records != nullptr ? records->size() : 1;
}

/* The number of a field that counts or announces another one, else its own. */
std::uint64_t number_of(const wire_form &form, std::size_t index, const wire_record &values)
{
    for (const auto &other : form.fields) {
        const auto found = values.find(std::string_view(other.row->name));
        if (other.counted_by == index && other.count_is_octets) {
            octets entries;
            write_array(entries, other, found != values.end() ? &found->second : nullptr);
            return entries.size();
        }
        if (other.counted_by == index) {
            return found != values.end() ? elements_of(found->second) : 0;
        }
        if (other.present_by == index) {
            return found != values.end() ? 1 : 0;
        }
    }
    const auto own = values.find(std::string_view(form.fields[index].row->name));
    const auto *number = own != values.end() ? std::get_if<std::uint64_t>(&own->second.is) : nullptr;
    return number != nullptr ? *number : 0;
}

void write_array(octets &out, const wire_field &field, const wire_value *value)
{
    const auto *numbers = value != nullptr ? std::get_if<std::vector<std::uint64_t>>(&value->is) : nullptr;
    const auto *records = value != nullptr ? std::get_if<std::vector<wire_record>>(&value->is) : nullptr;
    const std::size_t count = field.fixed != 0 ? field.fixed : value != nullptr ? elements_of(*value) : 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (!field.inside.empty()) {
            write_record(out, field.inside.front(),
                         records != nullptr && i < records->size() ? (*records)[i] : wire_record());
        } else {
            put_number(out, numbers != nullptr && i < numbers->size() ? (*numbers)[i] : 0, field.size);
        }
    }
}

void write_record(octets &out, const wire_form &form, const wire_record &values)
{
    for (std::size_t i = 0; i < form.fields.size(); ++i) {
        const wire_field &field = form.fields[i];
        const auto        found = values.find(std::string_view(field.row->name));
        if ((field.present_by != wire_field::none && found == values.end()) || field.is_message) {
            continue;
        }
        if (field.is_array || !field.inside.empty()) {
            wire_field one = field;
            one.fixed = field.is_array ? field.fixed : 1;
            write_array(out, one, found != values.end() ? &found->second : nullptr);
        } else {
            put_number(out, number_of(form, i, values), field.size);
        }
    }
}

} // namespace

std::optional<wire_form> wire_form_of(const domain &in, std::string_view structure)
{
    const auto use = find_type(in, structure);
    const auto type = use ? resolve(in, *use) : resolved_type();
    if (!use || type.kind != RW_KIND_STRUCT) {
        return std::nullopt;
    }
    const rw_struct_row &row = struct_row(in, type);
    wire_form            form = {&in, row.name, {}};
    for (std::uint32_t i = 0; i < row.no_members; ++i) {
        const rw_member_row &member = row.members[i];
        if (is_capacity(row, member)) {
            continue;
        }
        wire_field field;
        field.row = &member;
        if (member.kind == RW_KIND_BIT_FIELD) {
            return std::nullopt;
        }
        field.type = resolve(in, use_of(member));
        if (!set_shape(in, row, member, form, field) || !set_content(in, field)) {
            return std::nullopt;
        }
        form.fields.push_back(std::move(field));
    }
    depart(form);
    return form;
}

octets write_wire(const wire_form &form, const wire_record &values)
{
    octets out;
    write_record(out, form, values);
    return out;
}

} // namespace solvane::tools
