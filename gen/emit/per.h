// The emitters of the PER codecs (model/per.h), one file an operation family.
//
// Of every unit that holds codecs five files are made, so that no source is longer than a few thousand lines:
//
//     <stem>_codec.h      declarations, each type with its definition in the schema
//     <stem>_pack.cpp     pack and size; entries that encode
//     <stem>_unpack.cpp   unpack; entries that decode
//     <stem>_print.cpp    print
//     <stem>_free.cpp     free and clear
#pragma once

#include <string>
#include <vector>

#include "base/output.h"
#include "emit/per_code.h"
#include "model/model.h"
#include "model/per.h"

namespace solvane::gen::per {

/// All outputs of the codecs.  `units` are those of the model, for their stems and paths.
void emit_codecs(const plan &p, const std::vector<unit> &units, std::vector<output_file> &files);

/// The functions of one type.
void put_pack(code_text &out, const plan &p, const codec &c);
void put_unpack(code_text &out, const plan &p, const codec &c);
void put_size(code_text &out, const plan &p, const codec &c);
void put_print(code_text &out, const plan &p, const codec &c);
void put_free(code_text &out, const plan &p, const codec &c);
void put_clear(code_text &out, const plan &p, const codec &c);

/// The expression of a usage's size in bits.
std::string size_of(const plan &p, const usage &type, const spot &at);

} // namespace solvane::gen::per
