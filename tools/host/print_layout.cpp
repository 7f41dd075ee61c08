#include <algorithm>

#include <fmt/format.h>

#include "print.h"
#include "words.h"

namespace solvane::tools {

namespace {

constexpr std::size_t indent_step = 4;
constexpr std::size_t widest_type = 40;
constexpr std::size_t widest_declarator = 40;
constexpr int         deepest = 32;

/// A line of the layout before its columns are aligned.
struct layout_line {
    std::size_t indent = 0;
    std::string type;
    std::string declarator;
    std::string place; ///< offset and size
    std::string notes;
    bool        is_remark = false; ///< a hole or a total: `notes` alone
    bool        is_brace = false;  ///< `type` alone
};

class layout_lines {
public:
    layout_lines(const plugin &loaded, const domain &in, bool expand) : loaded_(loaded), in_(in), expand_(expand) {}

    void record(const laid_record &what, std::uint64_t base, std::size_t indent, int depth);
    void print(session &to) const;

private:
    void member(const laid_record &owner, const laid_member &what, std::uint64_t base, std::size_t indent, int depth);
    void holes_before(const laid_record &owner, std::size_t &next, std::uint64_t until, std::uint64_t base,
                      std::size_t indent);
    std::string notes(const laid_record &owner, const laid_member &what) const;
    void        remark(std::size_t indent, std::string text)
    {
        lines_.push_back({indent, "", "", "", std::move(text), true});
    }

    const plugin            &loaded_;
    const domain            &in_;
    bool                     expand_;
    std::vector<layout_line> lines_;
};

std::string type_text(const laid_member &member)
{
    if (member.is_bit_field()) {
        return "bits";
    }
    const char *name = member.row->type_name != nullptr ? member.row->type_name : "?";
    const bool  tag = member.row->kind == RW_KIND_STRUCT || member.row->kind == RW_KIND_UNION ||
                     member.row->kind == RW_KIND_ENUM;
    return tag ? fmt::format("{} {}", kind_word(member.row->kind), name) : name;
}

std::string hole_text(const hole &what, std::uint64_t base)
{
    return what.octets != 0 ? fmt::format("hole of {} at {}", counted(what.octets, "octet"), base + what.offset)
                            : fmt::format("hole of {} in octet {}", counted(what.bits, "bit"), base + what.offset);
}

std::string layout_lines::notes(const laid_record &owner, const laid_member &what) const
{
    std::string out;
    for (const auto &note : notes_on(in_, owner, what)) {
        out += (out.empty() ? "" : ", ") + note;
    }
    const char *comment = loaded_.info->db_field_comment != nullptr
                              ? loaded_.info->db_field_comment(in_.number, owner.row->name, what.row->name)
                              : nullptr;
    return comment != nullptr ? out + (out.empty() ? "" : ", ") + comment : out;
}

/* Holes that begin before `until`; in a record of bit-fields several can. */
void layout_lines::holes_before(const laid_record &owner, std::size_t &next, std::uint64_t until, std::uint64_t base,
                                std::size_t indent)
{
    for (; next < owner.holes.size() && owner.holes[next].offset < until; ++next) {
        remark(indent, hole_text(owner.holes[next], base));
    }
}

void layout_lines::member(const laid_record &owner, const laid_member &what, std::uint64_t base, std::size_t indent,
                          int depth)
{
    const std::uint64_t offset = base + what.offset;
    const bool          opens = expand_ && depth < deepest && !what.is_bit_field() && what.levels.empty() &&
                       what.type.is_record();
    std::string place = fmt::format("{:5} {:5}", offset, what.size);
    if (what.is_bit_field()) {
        laid_member moved = what;
        for (auto &part : moved.parts) {
            part.octet += base;
        }
        place = fmt::format("{:>11}", place_of(moved.parts));
    }
    if (opens) {
        lines_.push_back({indent, type_text(what) + " {", "", place, notes(owner, what)});
        const laid_record inside = lay_out(in_, struct_row(in_, what.type), what.type.rt_tag);
        record(inside, offset, indent + indent_step, depth + 1);
        lines_.push_back({indent, fmt::format("}} {};", declarator_of(what)), "", "", "", false, true});
        return;
    }
    lines_.push_back({indent, type_text(what), declarator_of(what) + ";", place, notes(owner, what)});
}

void layout_lines::record(const laid_record &what, std::uint64_t base, std::size_t indent, int depth)
{
    std::size_t next_hole = 0;
    for (const auto &each : what.members) {
        holes_before(what, next_hole, each.offset, base, indent);
        member(what, each, base, indent, depth);
    }
    holes_before(what, next_hole, what.size, base, indent);
}

void layout_lines::print(session &to) const
{
    std::size_t types = 0;
    std::size_t declarators = 0;
    for (const auto &line : lines_) {
        if (!line.is_remark && !line.is_brace) {
            types = std::max(types, std::min(line.indent + line.type.size(), widest_type));
            declarators = std::max(declarators, std::min(line.declarator.size(), widest_declarator));
        }
    }
    for (const auto &line : lines_) {
        const std::string blanks(line.indent, ' ');
        if (line.is_remark) {
            to.line(blanks + to.paint(ink::note, "/* " + line.notes + " */"));
        } else if (line.is_brace) {
            to.line(blanks + to.paint(ink::type, line.type));
        } else {
            to.line(blanks +
                    to.paint.padded(ink::type, line.type, types > line.indent ? types - line.indent : 0) + " " +
                    to.paint.padded(ink::name, line.declarator, declarators) + " " +
                    to.paint(ink::note, fmt::format("/* {}{}{} */", line.place, line.notes.empty() ? "" : "  ",
                                                    line.notes)));
        }
    }
}

std::string totals_of(const laid_record &record)
{
    std::string out = fmt::format("{}, {}", counted(record.size, "octet"), counted(record.members.size(), "member"));
    std::uint64_t octets = 0;
    std::uint64_t bits = 0;
    for (const auto &each : record.holes) {
        octets += each.octets;
        bits += each.bits;
    }
    if (!record.holes.empty()) {
        out.append(", ").append(counted(record.holes.size(), "hole")).append(" of");
    }
    if (octets != 0) {
        out.append(" ").append(counted(octets, "octet"));
    }
    if (bits != 0) {
        out.append(octets != 0 ? " and " : " ").append(counted(bits, "bit"));
    }
    return out;
}

} // namespace

std::string counted(std::uint64_t count, const char *what)
{
    return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

void print_layout(session &to, const domain &in, const laid_record &record, bool expand)
{
    layout_lines lines(to.started(), in, expand);
    lines.record(record, 0, indent_step, 0);
    to.line(to.paint(ink::type, fmt::format("{} {} {{", kind_word(record.row->kind), record.row->name)));
    lines.print(to);
    to.line(to.paint(ink::type, "}; ") + to.paint(ink::note, "/* " + totals_of(record) + " */"));
}

} // namespace solvane::tools
