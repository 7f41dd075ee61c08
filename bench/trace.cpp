// Trace decoding on a table of full size, against the C library's formatter making the same lines and against
// std::lower_bound finding the same ids.
//
// The table has the generator's form: 88 modules, head and last items, ids without gaps, 120,846 rows.  Its lines
// are some 85 characters long.  `hot` runs over 64 traces, which stay in the first cache; `random` over 65536 out
// of the whole table, so that rows and formats come from memory, as they do for snprintf.
// Compare the minima of several rounds within one run: --benchmark_repetitions=10.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "tsc_decode.h"

namespace {

constexpr std::uint32_t no_modules = 88;
constexpr std::uint32_t no_items = 120846;

/// The shapes that most trace statements have; words and numbers make each format a text of its own.
struct format_shape {
    const char *before, *between, *after;
};
constexpr format_shape shapes[] = {
    {"%s: state change in procedure, old state=%%d", ", new state=%%d", ", timer stopped and queue emptied"},
    {"%s: cell index=%%d", ", rsrp level=%%d", ", neighbour measured on the second carrier, gap kept"},
    {"%s: received pdu, length=%%u", ", sequence number=%%u", ", window moved and buffer given back"},
    {"%s: register mask=0x%%x", ", value=0x%%x", ", written by the interrupt handler before wake-up"},
};

struct bench_table {
    std::vector<std::string>        formats;
    std::vector<std::string>        mod_names;
    std::vector<tsc_db_item_struct> items;
    std::vector<tsc_db_mod_struct>  modules;
    std::vector<std::uint32_t>      first_items;
    tsc_db_info_struct              db_info;

    [[nodiscard]] tsc_table view() const { return {&db_info, first_items.data()}; }
};

std::string make_format(std::uint32_t row)
{
    const format_shape &shape = shapes[row % std::size(shapes)];
    char                name[16], text[200];
    std::snprintf(name, sizeof name, "fn%05x", row);
    std::snprintf(text, sizeof text, (std::string(shape.before) + shape.between + shape.after).c_str(), name);
    return text;
}

void fill_table(bench_table *table)
{
    table->formats.reserve(no_items);
    table->mod_names.reserve(no_modules);
    std::uint32_t no_statements = no_items - no_modules - 1;
    for (std::uint32_t module = 0; module < no_modules; ++module) {
        const std::uint32_t start = module << TSC_MODULE_ID_BITS;
        table->mod_names.push_back("MODULE_" + std::to_string(module));
        table->modules.push_back({start, table->mod_names.back().c_str(), 1});
        table->first_items.push_back(static_cast<std::uint32_t>(table->items.size()));
        table->items.push_back({start, table->mod_names.back().c_str(), TSC_DIS_HEAD, "", 0});
        const std::uint32_t share = no_statements / (no_modules - module);
        no_statements -= share;
        for (std::uint32_t id = start + 1; id <= start + share; ++id) {
            table->formats.push_back(make_format(static_cast<std::uint32_t>(table->items.size())));
            table->items.push_back({id, table->formats.back().c_str(), TSC_DIS_ARGS, "module.c", 1});
        }
    }
    table->items.push_back({UINT32_C(0xFFFFFFFF), "", TSC_DIS_LAST, "", 0});
    table->db_info = {"tsc_db", table->items.data(), no_items, table->modules.data(), no_modules};
}

const bench_table &full_table()
{
    static bench_table table;
    if (table.items.empty())
        fill_table(&table);
    return table;
}

/// One trace in both layouts, with all that snprintf needs to make its line.
struct bench_trace {
    std::uint32_t             id;
    const tsc_db_item_struct *item;
    std::uint32_t             words[3]; /* integer layout: id and two arguments */
    std::uint8_t              text[40]; /* string layout */
};

bench_trace make_trace(const tsc_db_item_struct &item, std::uint32_t one, std::uint32_t two)
{
    bench_trace trace = {item.trace_id, &item, {item.trace_id, one, two}, {}};
    char        fields[32];
    const int   length = std::snprintf(fields, sizeof fields, "%u\x01%u", one, two);
    for (std::uint32_t octet = 0; octet < 4; ++octet)
        trace.text[octet] = static_cast<std::uint8_t>(item.trace_id >> (24 - 8 * octet));
    trace.text[7] = static_cast<std::uint8_t>(length);
    std::memcpy(trace.text + 8, fields, static_cast<std::size_t>(length));
    return trace;
}

/// `count` traces of random statements, always the same ones.
std::vector<bench_trace> make_traces(std::size_t count)
{
    const bench_table       &table = full_table();
    std::mt19937             random(1);
    std::vector<bench_trace> traces;
    const auto random_below = [&](std::uint32_t end) { return static_cast<std::uint32_t>(random()) % end; };
    while (traces.size() < count) {
        const tsc_db_item_struct &item = table.items[random_below(no_items)];
        if (item.status == TSC_DIS_ARGS)
            traces.push_back(make_trace(item, random_below(1000), random_below(100000)));
    }
    return traces;
}

void decode_with(benchmark::State &state, void (*decode)(const tsc_table &table, const bench_trace &trace))
{
    const auto      traces = make_traces(static_cast<std::size_t>(state.range(0)));
    const tsc_table table = full_table().view();
    std::size_t     next = 0;
    for (auto _ : state) {
        decode(table, traces[next]);
        next = next + 1 == traces.size() ? 0 : next + 1;
    }
    state.SetItemsProcessed(state.iterations());
}

void string_layout(benchmark::State &state)
{
    decode_with(state, [](const tsc_table &table, const bench_trace &trace) {
        tsc_trace_info info;
        benchmark::DoNotOptimize(tsc_decode_string_layout(table, trace.text, &info));
    });
}

void integer_layout(benchmark::State &state)
{
    decode_with(state, [](const tsc_table &table, const bench_trace &trace) {
        tsc_trace_info info;
        const auto    *data = reinterpret_cast<const std::uint8_t *>(trace.words);
        benchmark::DoNotOptimize(tsc_decode_integer_layout(table, data, sizeof trace.words, &info));
    });
}

/// The formatter alone: it is given the format and need not find it.
void library_formatter(benchmark::State &state)
{
    decode_with(state, [](const tsc_table &, const bench_trace &trace) {
        static char line[TSC_LINE_SIZE];
        std::snprintf(line, sizeof line, trace.item->trace_format, trace.words[1], trace.words[2]);
        benchmark::DoNotOptimize(line);
    });
}

void find_item(benchmark::State &state)
{
    decode_with(state, [](const tsc_table &table, const bench_trace &trace) {
        benchmark::DoNotOptimize(tsc_find_item(table, trace.id));
    });
}

/// A table whose maker does not tell where modules start: the documented search.
void find_item_by_search(benchmark::State &state)
{
    decode_with(state, [](const tsc_table &table, const bench_trace &trace) {
        benchmark::DoNotOptimize(tsc_find_item({table.db_info, nullptr}, trace.id));
    });
}

void library_search(benchmark::State &state)
{
    decode_with(state, [](const tsc_table &table, const bench_trace &trace) {
        const tsc_db_item_struct *const end = table.db_info->db + table.db_info->total;
        benchmark::DoNotOptimize(std::lower_bound(
            table.db_info->db, end, trace.id,
            [](const tsc_db_item_struct &item, std::uint32_t id) { return item.trace_id < id; }));
    });
}

void add_sizes(benchmark::internal::Benchmark *bench)
{
    bench->ArgName("traces")->Arg(64)->Arg(65536);
}

BENCHMARK(string_layout)->Apply(add_sizes);
BENCHMARK(integer_layout)->Apply(add_sizes);
BENCHMARK(library_formatter)->Apply(add_sizes);
BENCHMARK(find_item)->Apply(add_sizes);
BENCHMARK(find_item_by_search)->Apply(add_sizes);
BENCHMARK(library_search)->Apply(add_sizes);

} // namespace
