// solvane-host as a user runs it, against the plug-in made by hand: each row is a command line with what it has to
// write and the code that it has to end with.
#include <cstring>
#include <fstream>

#include <gtest/gtest.h>

#include "run_tool.h"

namespace solvane::tools::test {
namespace {

const std::string noise = "the library speaks on standard output\n";

/* What the library prints must never reach our data; here it is taken off the rest of standard error. */
std::string without_noise(std::string text)
{
    if (const auto at = text.find(noise); at != std::string::npos) {
        text.erase(at, noise.size());
    }
    return text;
}

struct row {
    const char              *name;
    std::vector<std::string> words;
    int                      code;
    std::string              out; ///< "..." at its end: more may follow
    std::string              err = "";
    std::string              in = "";
};

void check(const std::vector<row> &rows)
{
    for (const auto &row : rows) {
        std::vector<std::string> words = {"--lib", FAKE_PLUGIN};
        words.insert(words.end(), row.words.begin(), row.words.end());
        const auto result = run_tool(words, row.in);
        const bool open = row.out.size() >= 3 && row.out.compare(row.out.size() - 3, 3, "...") == 0;
        const auto expected = open ? row.out.substr(0, row.out.size() - 3) : row.out;
        EXPECT_EQ(open ? result.out.substr(0, expected.size()) : result.out, expected) << row.name;
        EXPECT_EQ(without_noise(result.err), row.err) << row.name;
        EXPECT_EQ(result.code, row.code) << row.name;
    }
}

TEST(dictionary, names)
{
    check({
        {"domains", {"domains"}, 0, R"(   domain          structs   types   enums bit-fields messages  messages are named by
 1 stack                 6      10       6          3        3  stack_msg_enum
 2 gsm                   6      10       6          3        1  stack_msg_enum
)", ""},
        {"types by part of a name", {"types", "PAIR", "--kind", "struct"}, 0,
         "stack          struct       2  pair_struct\ngsm            struct       2  pair_struct\n", ""},
        {"types of a domain", {"--domain", "ENTITY_GSM_STACK", "types", "*_union"}, 0,
         "gsm            union        4  choice_union\n", ""},
        {"types by member", {"types", "*_struct", "--member", "no_data", "--domain", "1", "--json"}, 0,
         R"({"schema":"solvane.type-name/1","domain":{"value":1,"text":"stack"},"name":"odd_struct","kind":"struct","octets":...)",
         ""},
        {"no such type", {"type", "od_struct"}, 1, "", "solvane-host: no type od_struct; did you mean odd_struct?\n"},
        {"no such domain", {"types", "--domain", "stak"}, 2, "",
         "solvane-host: no domain stak; did you mean stack? (domains: stack, gsm)\n"},
        {"typedef without end", {"type", "loop_t"}, 4, "",
         "solvane-host: broken dictionary of domain stack: the typedefs behind loop_t never end\n"},
    });
}

/* The rest of the layout depends on the pointers' width and is checked with octets written out by hand below. */
TEST(dictionary, layouts)
{
    check({
        {"holes, bit-fields, roles", {"type", "odd_struct", "--domain", "stack", "-o", "-"}, 0, sizeof(void *) == 8 ?
R"(/* stack, 120 octets */
struct odd_struct {
    uint8              kind;       /*     0     1  selects choice */
    /* hole of 3 octets at 1 */
    uint32             number;     /*     4     4 */
    bits               pd : 4;     /*       8.3-0 */
    bits               ti : 4;     /*       8.7-4 */
    /* hole of 1 octet at 9 */
    bits               wide : 10;  /* 11.1-0 10.7-0 */
    /* hole of 6 bits in octet 11 */
    enum colour_enum   colour;     /*    12     4 */
    union choice_union choice;     /*    16     4  selected by kind */
    uint8              extraP;     /*    20     1  presence of extra */
    /* hole of 1 octet at 21 */
    uint16             extra;      /*    22     2  present when extraP */
    uint8              no_data;    /*    24     1  counts data */
    /* hole of 7 octets at 25 */
    uint8              *data;      /*    32     8  counted by no_data */
    short              grid[2][3]; /*    40    12 */
    /* hole of 4 octets at 52 */
    struct pair_struct *links[2];  /*    56    16 */
    AsnBits            bits;       /*    72    16 */
    pair_list          pairs;      /*    88    16  list of pair_struct */
    union choice_union loose;      /*   104     4  no selector named */
    char               name[8];    /*   108     8 */
    uint8              last;       /*   116     1 */
    /* hole of 3 octets at 117 */
}; /* 120 octets, 18 members, 7 holes of 19 octets and 6 bits */
)" : "/* stack, 84 octets */...", ""},
        {"union", {"type", "choice_union", "--expand"}, 0, R"(/* stack, 4 octets, also in gsm */
union choice_union {
    struct pair_struct {       /*     0     2  case 1 */
        uint8            one;  /*     0     1 */
        uint8            two;  /*     1     1  "in ms" */
    } pair;
    uint32               word; /*     0     4  case 2 */
}; /* 4 octets, 2 members */
)", ""},
        {"typedef of an array of a typedef", {"type", "table_t"}, 0,
         "/* stack, 24 octets, also in gsm */\ntypedef uint16 table_t[4][3];\ntypedef unsigned short uint16;\n", ""},
        {"list", {"type", "pair_list"}, 0, sizeof(void *) == 8 ? R"(/* stack, 16 octets, list of pair_struct, also in gsm */
typedef struct AsnList pair_list;
struct AsnList {
    struct AsnListNode *first; /*     0     8  not counted, here ASN_LST_P_pair_list */
    int                count;  /*     8     4 */
    /* hole of 4 octets at 12 */
}; /* 16 octets, 2 members, 1 hole of 4 octets */
)" : "/* stack, 8 octets, list of pair_struct, also in gsm */\n...", ""},
        {"anonymous enumeration", {"type", "SRV_ID_E"}, 0,
         "/* stack, 4 octets, also in gsm */\ntypedef enum 15000 SRV_ID_E;\nenum 15000 {\n    SRV_A = 0,\n"
         "    SRV_B = 4,\n}; /* 2 literals */\n", ""},
        {"for programs", {"type", "pair_struct", "--json"}, 0,
         R"({"schema":"solvane.type/1","domain":{"value":1,"text":"stack"},"name":"pair_struct","kind":{"value":9,"text":"struct"},"octets":2,"members":[{"name":"one","type":"uint8","octets":1,"offset":0,"role":{"value":0,"text":"plain"}},{"name":"two","type":"uint8","octets":1,"offset":1,"role":{"value":0,"text":"plain"}}],"holes":[]})"
         "\n", ""},
    });
}

TEST(dictionary, enumerations_messages_and_words)
{
    check({
        {"literals that share a value or have none", {"enum", "colour_enum"}, 0,
         "       0  RED\n       1  GREEN\n       1  LIME\n      -1  MINUS\nnot evaluated  UNSET\n", ""},
        {"a value", {"enum", "colour_enum", "0xffffffff"}, 0, "      -1  MINUS\n", ""},
        {"by number as name", {"enum", "15000", "SRV_B"}, 0, "       4  SRV_B\n", ""},
        {"no such literal", {"enum", "colour_enum", "GREAN"}, 1, "",
         "solvane-host: no literal GREAN in colour_enum; did you mean GREEN?\n"},
        {"a code of two domains", {"message", "2", "--no-layout"}, 0,
         "stack               2 0x0002  MSG_ID_HELLO                            0 INVALID_SAP       odd_struct\n"
         "gsm                 2 0x0002  GSM_MSG_ID_HELLO                        0 INVALID_SAP       pair_struct\n", ""},
        {"followed to its structure", {"message", "GSM_MSG_ID_HELLO"}, 0,
         "gsm                 2 0x0002  GSM_MSG_ID_HELLO                        0 INVALID_SAP       pair_struct\n"
         "struct pair_struct {\n    uint8 one; /*     0     1 */\n    uint8 two; /*     1     1 */\n"
         "}; /* 2 octets, 2 members */\n", ""},
        {"no body", {"message", "MSG_ID_MMCC_DATA_REQ"}, 0,
         "stack              27 0x001b  MSG_ID_MMCC_DATA_REQ                   49 MM_CC_SAP         no body\n", ""},
        {"a body that is in no dictionary", {"message", "28"}, 1,
         "stack              28 0x001c  MSG_ID_LOST                            49 MM_CC_SAP         lost_struct\n",
         "solvane-host: the dictionary of domain stack does not know structure lost_struct\n"},
        {"no such message", {"message", "MSG_ID_HALLO"}, 1, "",
         "solvane-host: no message MSG_ID_HALLO; did you mean MSG_ID_HELLO?\n"},
        {"first of two texts", {"value", "pair_struct", "one", "1"}, 0, "stack pair_struct.one = 1  first\n", ""},
        {"text of a case", {"value", "pair_struct", "two", "131", "--case", "1"}, 0,
         "stack pair_struct.two = 131  No route to destination  \"in ms\"\n", ""},
        {"any case", {"value", "pair_struct", "two", "9"}, 0,
         "stack pair_struct.two = 9  something (any other case)  \"in ms\"\n", ""},
        {"no words", {"value", "pair_struct", "one", "7"}, 1, "stack pair_struct.one = 7  no words\n", ""},
        {"literal", {"value", "odd_struct", "colour", "-1", "--domain", "gsm"}, 0, "gsm odd_struct.colour = 4294967295  MINUS\n",
         ""},
        {"no such field", {"value", "pair_struct", "tow", "1"}, 1, "",
         "solvane-host: no field tow in pair_struct; did you mean two?\n"},
    });
}

/* Octets of an odd_struct on a machine with pointers of 8 octets. */
const char *const odd_image =
    "01000000 aabbccdd 35 00 4e13 ffffffff 01830000 00 00 0700 02 00000000000000 0010000000000000 0100feff0300 "
    "040005000600 00000000 0000000000000000 1100000000000000 09000000 00000000 0000000000000000 0000000000000000 "
    "02000000 00000000 07000000 6869000000000000 7f 000000";

TEST(record, lays_an_image_out)
{
    if (sizeof(void *) != 8) {
        GTEST_SKIP() << "the image is one of a 64-bit machine";
    }
    check({
        {"every shape", {"record", "odd_struct", odd_image}, 0, R"x(odd_struct /* stack, 120 octets */
    kind     1
    number   3721182122
    pd       5
    ti       3
    wide     846
    colour   -1 MINUS
    choice   (case 1)
        pair
            one  1  "first"
            two  131  "No route to destination (case 1)"
    extraP   0
    extra    absent
    no_data  2
    data     0x1000  (2 elements)
    grid
        [0]
            [0]  1
            [1]  -2
            [2]  3
        [1]
            [0]  4
            [1]  5
            [2]  6
    links
        [0]  null
        [1]  0x11
    bits
        bitLen  9
        bits    null  (2 elements)
    pairs
        first  null
        count  2
    loose    07000000  (no selector named)
    name     6869000000000000  "hi"
    last     127
)x", ""},
        {"a selector without case", {"record", "odd_struct", std::string("03") + (odd_image + 2), "--json"}, 0,
         R"({"schema":"solvane.record/1","domain":{"value":1,"text":"stack"},"type":"odd_struct","octets":120,"image_octets":120,"value":{"kind":3,"number":3721182122,"pd":5,"ti":3,"wide":846,"colour":{"value":-1,"text":"MINUS"},"choice":null,"extraP":0,...)",
         ""},
    });
}

TEST(record, tells_of_images_that_do_not_fit)
{
    check({
        {"too short", {"record", "pair_struct", "01"}, 1,
         "pair_struct /* stack, 2 octets */\n    one  1  \"first\"\n    two  beyond the end of the image\n",
         "solvane-host: the image has 1 octet, pair_struct takes 2\n"},
        {"empty", {"record", "choice_union", "-"}, 1, "choice_union /* stack, 4 octets */\nbeyond the end of the image\n",
         "solvane-host: the image has 0 octets, choice_union takes 4\n", "\n"},
        {"too long, from standard input", {"record", "pair_struct", "-", "--json"}, 1,
         R"({"schema":"solvane.record/1","domain":{"value":1,"text":"stack"},"type":"pair_struct","octets":2,"image_octets":3,"value":{"one":{"value":2,"text":"second"},"two":3}})"
         "\n", "solvane-host: the image has 3 octets, pair_struct takes 2\n", "02 03\n04\n"},
        {"no hex", {"record", "pair_struct", "01", "0x"}, 1, "...", "solvane-host: the image has 1 octet, pair_struct takes 2\n"},
        {"bad hex", {"record", "pair_struct", "01", "q2"}, 2, "",
         "solvane-host: column 4 of the image: not a hex digit\n"},
        {"no structure", {"record", "uint8", "01"}, 1, "", "solvane-host: uint8 is no structure\n"},
        {"no image", {"record", "pair_struct"}, 2, "",
         "solvane-host: no image: give hex octets, - for hex on standard input, or -r FILE\n"},
    });
}

const char *const script = R"(start 2026-05-14T08:30:00Z
0.000100 in  trace SDI+1 3 5
0.000200 in  words com_tcp.c:153 3 -5
0.000300 in  trace SDI+2
0.000400 in  trace SDI+1 3
0.000500 in  trace 0x999999
0.000600 in  packet 12 00
0.000700 out packet 21
0.000800 in  trace MM+1 1a
- in message sap=MM_CC_SAP msg=27 peer=0305
- in message sap=49 msg=27 peer=0306
- in message sap=1 msg=MSG_ID_HELLO
)";

TEST(trace, makes_lines)
{
    check({
        {"both layouts, bad frames, unknown ids", {"trace", "-"}, 1,
R"([    0.000000] SDI       waiting connect, connected_num(3),support client_num(5)  (com_tcp.c:153)
[    0.000100] SDI       waiting connect, connected_num(3),support client_num(-5)  (com_tcp.c:153)
[    0.000200] SDI       connected  (com_tcp.c:160)
[    0.000300] SDI       waiting connect, connected_num(3),support client_num(?) -- ERROR: arg_num is not match!!! --   (com_tcp.c:153)
[    0.000400] 0x00999999  ERROR: can not find in tsc_db!!!
[    0.000500] ?         bad frame: a trace takes 8 octets or more, not 1  (packet 6)
[    0.000700] MM        cqi=0x1a@TAG<cqi>  (mm_cs.c:7)
)", "solvane-host: 6 shown, 1 bad, 1 of unknown id\n", script},
        {"filters, UTC", {"trace", "-", "--module", "sdi", "--not-grep", "connected_num", "-t", "absolute", "-q"}, 1,
         "[2026-05-14T08:30:00.000300Z] SDI       connected  (com_tcp.c:160)\n"
         "[2026-05-14T08:30:00.000600Z] ?         bad frame: a trace takes 8 octets or more, not 1  (packet 6)\n", "", script},
        {"ids and files", {"trace", "--id", "0x80001-0x100001", "--not-id", "0x80001", "--not-file", "mm*", "-tn", "-q"}, 1,
         "SDI       connected  (com_tcp.c:160)\n?         bad frame: a trace takes 8 octets or more, not 1  (packet 6)\n", "",
         script},
        {"the first two, by delta", {"trace", "-c", "2", "-t", "delta", "--module", "SDI"}, 0,
         "[    0.000000] SDI       waiting connect, connected_num(3),support client_num(5)  (com_tcp.c:153)\n"
         "[    0.000100] SDI       waiting connect, connected_num(3),support client_num(-5)  (com_tcp.c:153)\n", "", script},
        {"named arguments", {"trace", "--module", "MM", "--json", "-q"}, 1,
         R"({"schema":"solvane.trace/1","packet":6,"time_ns":1778747400000600000,"error":"a trace takes 8 octets or more, not 1","octets":"1200"}
{"schema":"solvane.trace/1","packet":8,"time_ns":1778747400000800000,"direction":{"value":1,"text":"in"},"layout":"string","id":1048577,"module":{"value":2,"text":"MM"},"text":"cqi=0x1a@TAG<cqi>","file":"mm_cs.c","line":7,"args":[{"name":"cqi","value":"1a"}]}
)", "", script},
        {"counts", {"trace", "--stats", "--grep", "conn"}, 1,
         "       3  SDI       waiting connect, connected_num(%d),support client_num(%d)  (com_tcp.c:153)\n"
         "       1  SDI       connected\\n  (com_tcp.c:160)\n", "solvane-host: 4 shown, 1 bad, 0 of unknown id\n", script},
        {"a line that the library does not survive", {"trace", "-tn"}, 6,
         "?         bad frame: the decoder died on trace 0x00100002  (packet 1)\nMM        text short  (mm_cs.c:9)\n",
         "solvane-host: 1 shown, 1 bad, 0 of unknown id\n",
         "- in trace MM+2 \"" + std::string(1100, 'x') + "\"\n- in trace MM+2 short\n"},
        {"a long line that it survives", {"trace", "-tn", "--module", "MM"}, 0,
         "MM        text " + std::string(1018, 'x') + "  (mm_cs.c:9)\n", "", "- in trace MM+2 \"" + std::string(1018, 'x') + "\"\n"},
        {"isolated", {"trace", "-tn", "--isolate"}, 0, "MM        text short  (mm_cs.c:9)\n", "", "- in trace MM+2 short\n"},
        {"hex", {"trace", "-tn"}, 0, "SDI       connected  (com_tcp.c:160)\n", "", "12 00080002 00000000\n"},
        {"nothing", {"trace"}, 0, "", "", ""},
        {"unknown module", {"trace", "--module", "SDJ"}, 1, "", "solvane-host: no trace module SDJ; did you mean SDI?\n", script},
        {"bad expression", {"trace", "--grep", "("}, 2, "",
         "solvane-host: ( is no regular expression: Mismatched '(' and ')' in regular expression\n", script},
        {"no recording", {"trace", "/nonexistent"}, 3, "",
         "solvane-host: cannot open /nonexistent: No such file or directory\n"},
        {"statement", {"statements", "0x80002", "--json"}, 0,
         R"({"schema":"solvane.statement/1","id":524290,"module":{"value":1,"text":"SDI"},"number":2,"format":"connected\n","status":{"value":0,"text":"single"},"file":"com_tcp.c","line":160})"
         "\n", ""},
    });
}

TEST(trace, keeps_what_came_before_the_damage)
{
    temporary_file capture, cut;
    ASSERT_EQ(run_tool({"--lib", FAKE_PLUGIN, "convert", "-w", capture.path()}, script).code, 0);
    const std::string whole = capture.content();
    std::ofstream(cut.path(), std::ios::binary) << whole.substr(0, whole.size() - 20);
    const auto result = run_tool({"--lib", FAKE_PLUGIN, "trace", cut.path(), "--module", "MM", "-q"});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.out.find("cqi=0x1a"), std::string::npos);
    const std::string line = without_noise(result.err);
    EXPECT_NE(line.find(": offset " + std::to_string(whole.size() - 64)), std::string::npos) << line;
    EXPECT_NE(line.find("the file ends inside a block"), std::string::npos) << line;
    EXPECT_EQ(line.find('\n'), line.size() - 1);
}

TEST(convert, goes_there_and_back)
{
    temporary_file    capture, again;
    const std::string lib = FAKE_PLUGIN;
    ASSERT_EQ(run_tool({"--lib", lib, "convert", "-", "-w", capture.path()}, script).code, 0);
    const auto text = run_tool({"--lib", lib, "convert", capture.path()});
    EXPECT_EQ(text.code, 0);
    EXPECT_EQ(text.out.substr(0, 100),
              "start 2026-05-14T08:30:00.000000Z\n0.000100 in  trace SDI+1 \"3\" \"5\"\n0.000200 in  words SDI+1 3 -5\n0.0");
    ASSERT_EQ(run_tool({"--lib", lib, "convert", "-w", again.path()}, text.out).code, 0);
    EXPECT_EQ(capture.content(), again.content());
    EXPECT_NE(capture.content().find("baseline FAKE_V1"), std::string::npos);
}

TEST(classify, names_structures)
{
    check({
        {"by names", {"classify", "--sap", "MM_CC_SAP", "--msg", "MSG_ID_MMCC_DATA_REQ", "--peer", "0305"}, 0,
         "stack  sap 49 MM_CC_SAP  msg 27 MSG_ID_MMCC_DATA_REQ  pair_struct  (2 octets)\n", ""},
        {"no codec", {"classify", "--sap", "49", "--msg", "27", "--peer", "0306", "--json"}, 0,
         R"({"schema":"solvane.classification/1","domain":{"value":1,"text":"stack"},"sap":{"value":49,"text":"MM_CC_SAP"},"message":{"value":27,"text":"MSG_ID_MMCC_DATA_REQ"},"peer":"0306","struct":"no_codec_struct","octets":null})"
         "\n", ""},
        {"one octet: the next one is ours", {"classify", "--sap", "49", "--msg", "27", "--peer", "03"}, 1,
         "stack  sap 49 MM_CC_SAP  msg 27 MSG_ID_MMCC_DATA_REQ  no peer structure\n", ""},
        {"decoded", {"classify", "--sap", "49", "--msg", "27", "--peer", "0305", "--decode"}, 0,
         "stack  sap 49 MM_CC_SAP  msg 27 MSG_ID_MMCC_DATA_REQ  pair_struct  (2 octets)\n    one  3\n    two  5\n", ""},
        {"the library dies", {"classify", "--sap", "49", "--msg", "27", "--peer", "0305", "--local", "ff"}, 6, "",
         "solvane-host: the library died on this message\n"},
        {"unknown name", {"classify", "--sap", "MM_CC_SAPP", "--msg", "27"}, 2, "",
         "solvane-host: MM_CC_SAPP is no number up to 255 and no literal of stack_sap_enum in domain stack; did you mean "
         "MM_CC_SAP?\n"},
        {"a recording", {"classify", "-", "-t", "none"}, 0,
         "stack  sap 49 MM_CC_SAP  msg 27 MSG_ID_MMCC_DATA_REQ  pair_struct  (2 octets)\n"
         "stack  sap 49 MM_CC_SAP  msg 27 MSG_ID_MMCC_DATA_REQ  no_codec_struct  (no codec)\n"
         "stack  sap 1  msg 2 MSG_ID_HELLO  no peer structure\n", "", script},
        {"peer sizes against the dictionary", {"peers"}, 1,
         std::string("    0       2  pair_struct                                   stack, gsm\n")
         + (sizeof(void *) == 8 ? "    1     120" : "    1      84") +
         "  odd_struct                                    stack, gsm\n"
         "    2       3  choice_union                                  stack, gsm\n"
         "    3       4  unknown_struct                                not in the dictionary\n",
         "solvane-host: choice_union has 3 octets in the peer table and 4 in the dictionary\n"},
    });
}

TEST(decode, follows_pointers_counts_and_lists)
{
    check({
        {"brief", {"decode", "odd_struct", "a1b2"}, 0, R"x(odd_struct /* stack, 2 octets */
    kind    2
    number  0
    pd      0
    ti      0
    wide    0
    colour  0 RED
    choice  (case 2)
        word  7
    extraP  1
    extra   9
    data    a1b2
    grid
        [0]
            [0]  0
            [1]  0
            [2]  0
        [1]
            [0]  0
            [1]  0
            [2]  0
    links
        [0]  null
        [1]
            one  0
            two  0
    bits
        bitLen  9
        bits    0080
    pairs
        [0]
            one  1  "first"
            two  11
        [1]
            one  2  "second"
            two  12
    loose   00000000  (no selector named)
    name    0000000000000000
    last    0
)x"},
        {"every kind of pointer", {"decode", "--all", "odd_struct", "a1b2"}, 0, R"x(odd_struct /* stack, 2 octets */
    kind     2
    number   0
    pd       0
    ti       0
    wide     0
    colour   0 RED
    choice   (case 2)
        word  7
    extraP   1
    extra    9
    no_data  2
    data     (2 elements)
        ->  a1b2
    grid
        [0]
            [0]  0
            [1]  0
            [2]  0
        [1]
            [0]  0
            [1]  0
            [2]  0
    links
        [0]  null
        [1]
            ->
                one  0
                two  0
    bits
        bitLen  9
        bits    (2 elements)
            ->  0080
    pairs
        [0]
            one  1  "first"
            two  11
        [1]
            one  2  "second"
            two  12
    loose    00000000  (no selector named)
    name     0000000000000000
    last     0
)x"},
        {"for programs", {"decode", "pair_struct", "01", "0203", "--json"}, 1,
         R"({"schema":"solvane.decoded/1","domain":{"value":1,"text":"stack"},"struct":"pair_struct","message":"010203","octets_used":2,"error":{"value":0,"text":"none"},"must_understand":false,"value":{"one":{"value":1,"text":"first"},"two":2}})"
         "\n"},
        {"octets left over", {"decode", "pair_struct", "010203"}, 1,
         "pair_struct /* stack, 3 octets */  2 of 3 octets used\n    one  1  \"first\"\n    two  2\n"},
        {"too short", {"decode", "pair_struct", "01"}, 1,
         "pair_struct /* stack, 1 octet */  broken off, 0 of 1 octets used\n    one  0\n    two  0\n"},
        {"not survived", {"decode", "pair_struct", "ee00", "--isolate"}, 6, "",
         "solvane-host: the library died on a pair_struct: ee00\n"},
        {"a container", {"decode", "odd_struct", "0105", "--open", "bits=pair_struct"}, 0, R"x(odd_struct /* stack, 2 octets */
    kind    2
    number  0
    pd      0
    ti      0
    wide    0
    colour  0 RED
    choice  (case 2)
        word  7
    extraP  1
    extra   9
    data    0105
    grid
        [0]
            [0]  0
            [1]  0
            [2]  0
        [1]
            [0]  0
            [1]  0
            [2]  0
    links
        [0]  null
        [1]
            one  0
            two  0
    bits
        bitLen       9
        bits         0080
        pair_struct
            one  0
            two  128
    pairs
        [0]
            one  1  "first"
            two  11
        [1]
            one  2  "second"
            two  12
    loose   00000000  (no selector named)
    name    0000000000000000
    last    0
)x", ""},
        {"a container without a structure", {"decode", "odd_struct", "0105", "--open", "data"}, 2, "",
         "solvane-host: data: give the member and the structure, MEMBER=STRUCT\n"},
        {"a container of an unknown one", {"decode", "odd_struct", "0105", "--open", "data=pair_strct"}, 1, "",
         "solvane-host: no codec for pair_strct; did you mean pair_struct?\n"},
        {"no codec", {"decode", "pair_strct", "00"}, 1, "", "solvane-host: no codec for pair_strct; did you mean pair_struct?\n"},
        {"no dictionary", {"decode", "unknown_struct", "00"}, 1, "", "solvane-host: unknown_struct is in no dictionary\n"},
        {"a recording", {"decode", "-r", "-", "-tn"}, 1,
         "pair_struct /* stack, 2 octets */\n    one  3\n    two  5\n",
         "solvane-host: packet 10: no codec for no_codec_struct\n", script},
    });
}

TEST(encode, writes_every_kind_of_member)
{
    check({
        {"what decode printed", {"encode", "pair_struct", R"({"one":{"value":1,"text":"first"},"two":2})"}, 0, "0102\n", ""},
        {"members left out are 0", {"encode", "pair_struct", R"({"two":"0x7f"})"}, 0, "007f\n", ""},
        {"counts, flags, selectors and links follow",
         {"encode", "odd_struct", R"({"choice":{"word":7},"pd":9,"wide":515,"colour":"GREEN","extra":5,"data":"a1b2c3",)"
                                  R"("links":[null,{"two":8}],"bits":{"bitLen":3,"bits":"a0"},)"
                                  R"("pairs":[{"two":11},{"two":12}]})"},
         0, "03a1b2c3" "02" "07" "09" "03" "01" "01" "05" "08" "03" "0b0c" "\n", ""},
        {"for programs", {"encode", "--json", "pair_struct", "-"}, 0,
         R"({"schema":"solvane.encoded/1","domain":{"value":1,"text":"stack"},"struct":"pair_struct","message":"0304","bits":16})"
         "\n", "", R"({"schema":"solvane.decoded/1","struct":"pair_struct","value":{"one":3,"two":4}})"},
        {"a value of another structure", {"encode", "pair_struct", R"({"schema":"x","struct":"odd_struct","value":{}})"}, 2,
         "", "solvane-host: the value is a odd_struct, not a pair_struct\n"},
        {"no such member", {"encode", "pair_struct", R"({"twoo":4})"}, 2, "",
         "solvane-host: twoo: pair_struct has no such member; did you mean two?\n"},
        {"too wide", {"encode", "odd_struct", R"({"pd":16})"}, 2, "", "solvane-host: pd: 16 does not fit in 4 bits\n"},
        {"a count that lies", {"encode", "odd_struct", R"({"no_data":2,"data":"a1"})"}, 2, "",
         "solvane-host: data: no_data says 2, here it is 1\n"},
        {"no such case", {"encode", "odd_struct", R"({"choice":{"wird":1}})"}, 2, "",
         "solvane-host: choice.wird: choice_union has no such case; did you mean word?\n"},
        {"deep inside", {"encode", "odd_struct", R"({"pairs":[{"two":1},{"two":"x"}]})"}, 2, "",
         "solvane-host: pairs[1].two: x is no number\n"},
        {"no literal", {"encode", "odd_struct", R"({"colour":"GREENN"})"}, 2, "",
         "solvane-host: colour: GREENN is no number; did you mean GREEN?\n"},
        {"too many elements", {"encode", "odd_struct", R"({"grid":[[1],[2],[3]]})"}, 2, "",
         "solvane-host: grid: an array of at most 2 elements is wanted\n"},
        {"no JSON", {"encode", "pair_struct", "{"}, 2, "", "solvane-host: octet 2 of the value: this is no JSON\n"},
        {"no codec", {"encode", "pair_strct", "{}"}, 1, "",
         "solvane-host: no codec for pair_strct; did you mean pair_struct?\n"},
    });
}

TEST(roundtrip, tells_where_octets_change)
{
    check({
        {"the same", {"roundtrip", "pair_struct", "0102"}, 0, "pair_struct  same, 16 bits\n", ""},
        {"an octet that is not understood", {"roundtrip", "pair_struct", "-"}, 1,
         "pair_struct\ndiffers from octet 2, bit 7 on\n  given  010203\n  again  0102\n", "", "01 02 03"},
        {"for programs", {"roundtrip", "odd_struct", "a1b2", "--json"}, 1,
         R"({"schema":"solvane.roundtrip/1","struct":"odd_struct","message":"a1b2",)"
         R"("again":"02a1b20207000000010900090b0c","same":false,"first_difference_bit":0})"
         "\n", ""},
        {"not survived", {"roundtrip", "pair_struct", "ee00", "--isolate"}, 6, "",
         "solvane-host: the library died on a pair_struct: ee00\n"},
    });
}

TEST(check, finds_what_is_wrong_in_the_tables)
{
    check({
        {"all of it", {"check"}, 1, R"(stack loop_t: broken dictionary of domain stack: the typedefs behind loop_t never end
stack MSG_ID_LOST: lost_struct is no structure
gsm loop_t: broken dictionary of domain gsm: the typedefs behind loop_t never end
peer choice_union: lacks a codec
peer choice_union: takes 3 octets, in domain stack 4
peer choice_union: takes 3 octets, in domain gsm 4
peer unknown_struct: lacks a codec
peer unknown_struct: is in no dictionary
2 described fields, 12 enumerations, 56 members, 4 messages, 4 peer structures, 12 structures, 8 trace statements, 20 types: 8 faults
)"},
        {"a domain", {"check", "--domain", "gsm", "--json"}, 1,
         R"({"schema":"solvane.fault/1","where":"gsm loop_t","fault":"broken dictionary of domain gsm: the typedefs behind loop_t never end"}
{"schema":"solvane.check/1","enumerations":6,"members":28,"messages":1,"structures":6,"types":10,"faults":1}
)"},
    });
}

TEST(command_line, ends_as_agreed)
{
    check({
        {"version", {"--version"}, 0, "solvane-host 1.0.0\n", ""},
        {"no command", {}, 2, "", "solvane-host: no command given (see solvane-host --help)\n"},
        {"unknown command", {"trac"}, 2, "", "solvane-host: no command trac; did you mean trace? (see solvane-host --help)\n"},
        {"missing argument", {"type"}, 2, "", "solvane-host: NAME is required (see solvane-host type --help)\n"},
        {"bad number", {"trace", "-c", "ten"}, 2, "",
         "solvane-host: -c,--count: 'ten' is no number (see solvane-host trace --help)\n"},
        {"bad choice", {"--color", "blue", "info"}, 2, "",
         "solvane-host: --color: blue not in {auto,always,never} (see solvane-host info --help)\n"},
        {"examples first", {"type", "--help"}, 0, "type: a type laid out member by member\n\nExamples:\n  solvane-host type mta_bit_map_struct\n...", ""},
        {"before the start", {"info", "--no-init"}, 0, "library           " FAKE_PLUGIN "\ninterface         1.0\n"
         "interface number  1\nstarted           no\n", ""},
        {"colour", {"--color", "always", "enum", "SRV_ID_E", "4"}, 0, "\033[33m       4\033[0m  \033[1mSRV_B\033[0m\n", ""},
    });
}

TEST(plugin, is_refused_with_one_line)
{
    struct row {
        const char              *name;
        std::vector<std::string> words;
        std::vector<std::string> environment;
        int                      code;
        std::string              err;
    };
    temporary_file text("no library");
    const row      rows[] = {
        {"missing export", {"--lib", FAKE_INCOMPLETE_PLUGIN, "info"}, {}, 3,
         "solvane-host: " FAKE_INCOMPLETE_PLUGIN " is no Solvane plug-in: it does not export tt_peer_table\n"},
        {"no file", {"--lib", "/nonexistent.so", "info"}, {}, 3,
         "solvane-host: cannot load the plug-in: /nonexistent.so: cannot open shared object file: No such file or directory\n"},
        {"no library", {"info"}, {"SOLVANE_LIB=" + text.path()}, 3,
         "solvane-host: cannot load the plug-in: " + text.path() + ": file too short\n"},
        {"other interface", {"info"}, {"SOLVANE_LIB=" FAKE_PLUGIN, "FAKE_VERSION=2"}, 4,
         "solvane-host: " FAKE_PLUGIN " offers interface \"1.0\" number 2; this tool knows \"1.0\" number 1\n"},
        {"other baseline", {"info", "--expect", "FAKE_V2", "-o", "/dev/null"}, {"SOLVANE_LIB=" FAKE_PLUGIN}, 4,
         "solvane-host: " FAKE_PLUGIN " is of baseline FAKE_V1, expected was FAKE_V2\n"},
    };
    for (const auto &row : rows) {
        const auto result = run_tool(row.words, "", row.environment);
        EXPECT_EQ(result.code, row.code) << row.name;
        EXPECT_EQ(without_noise(result.err), row.err) << row.name;
        EXPECT_EQ(result.out, "") << row.name;
    }
}

TEST(streams, end_quietly_when_the_reader_goes)
{
    const std::string command = std::string(SOLVANE_HOST_TOOL) + " --lib " FAKE_PLUGIN
                                " -l types 2>&1 >/dev/null | cat; " SOLVANE_HOST_TOOL " --lib " FAKE_PLUGIN
                                " -l statements 2>/dev/null | true; echo ${PIPESTATUS[0]}";
    FILE *shell = ::popen(("bash -c '" + command + "'").c_str(), "r");
    ASSERT_NE(shell, nullptr);
    std::string all;
    char        line[256];
    while (std::fgets(line, sizeof line, shell) != nullptr) {
        all += line;
    }
    ::pclose(shell);
    EXPECT_EQ(all.substr(all.size() - 2), "0\n") << all;
}

TEST(tables, become_completion_and_manual)
{
    const auto completion = run_tool({"completion", "bash"});
    EXPECT_EQ(completion.code, 0);
    for (const char *piece : {"trace) words=\"-r --read -c --count", "--color) COMPREPLY=($(compgen -W \"auto always never\"",
                              "complete -F _solvane_host solvane-host"}) {
        EXPECT_NE(completion.out.find(piece), std::string::npos) << piece;
    }
    const auto manual = run_tool({"man"});
    EXPECT_EQ(manual.code, 0);
    EXPECT_NE(manual.out.find(".SS classify\n"), std::string::npos);
    EXPECT_EQ(run_tool({"completion", "tcsh"}).code, 2);
}

} // namespace
} // namespace solvane::tools::test
