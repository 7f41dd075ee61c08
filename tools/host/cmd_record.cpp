#include <fmt/format.h>

#include "byte_source.h"
#include "commands.h"
#include "failure.h"
#include "json_out.h"
#include "lookup.h"
#include "print.h"
#include "session.h"

namespace solvane::tools {

namespace {

struct record_options {
    std::string              name;
    std::vector<std::string> words;
    std::string              file;
};

/* -r reads octets as they are; the words of the command line, or standard input for "-", are hex. */
octets image_of(const record_options &options)
{
    if (!options.file.empty()) {
        const std::string raw = whole(byte_source::open(options.file));
        return {raw.begin(), raw.end()};
    }
    if (options.words.empty()) {
        throw failure(exit_usage, "no image: give hex octets, - for hex on standard input, or -r FILE");
    }
    return hex_words(options.words, "the image");
}

int run(session &work, const record_options &options)
{
    const octets        image = image_of(options);
    const found_type    found = find_record(work, options.name);
    const resolved_type type = resolve(*found.in, found.use);
    const std::uint64_t size = size_of(*found.in, type);
    const value_node    value = read_value(work.started(), *found.in, found.use, image);
    if (work.settings.json) {
        json out = json_object("record");
        out["domain"] = json_enum(found.in->number, found.in->name);
        out["type"] = options.name;
        out["octets"] = size;
        out["image_octets"] = image.size();
        out["value"] = json_value(value);
        work.line(json_line(out));
    } else {
        work.line(work.paint(ink::type, options.name) + " " +
                  work.paint(ink::note, fmt::format("/* {}, {} */", found.in->name, counted(size, "octet"))));
        print_value(work, value);
    }
    if (image.size() != size) {
        work.finding(fmt::format("the image has {}, {} takes {}", counted(image.size(), "octet"), options.name, size));
    }
    return work.result();
}

} // namespace

command record_command()
{
    const auto options = std::make_shared<record_options>();
    return {
        "record",
        "a structure's memory image as named values",
        "The image is laid out as the library's own compiler lays the structure out.  Pointers in it are addresses of\n"
        "somewhere else and are shown, not followed.  An optional member is absent when its presence flag is 0; of a\n"
        "union the case that its selector names is shown.",
        {{"record mta_bit_touple_struct 0c08", "two octets as a structure"},
         {"record qos_struct -r qos.bin --domain umts", "an image from a file of octets"},
         {"xxd -p image | solvane-host record qos_struct -", "hex from standard input"}},
        {{"NAME", "the structure", &options->name},
         {"HEX", "octets in memory order, or -", &options->words, false}},
        {{"-r,--read", "FILE", "take the image from a file, octets as they are", &options->file, {}, completes::file}},
        [options](session &work) { return run(work, *options); },
    };
}

} // namespace solvane::tools
