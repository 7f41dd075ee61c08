/*
 * The contract between the Solvane debug-information plug-in and the host that loads it.
 *
 * Plain C11, also C++; a host author needs no other file.  The library exports five names, declared at the
 * end.  Load it, read or change `dll_info_version`, call `init_dll` once, then work through `dll_info` and
 * `tt_peer_table`.  Every pointer reached from these records stays valid until the process ends, and all
 * tables are read-only after `init_dll`, so any thread may read them.
 *
 * The layouts are those of a 32-bit word machine; a 64-bit build keeps the order of the fields and lays every
 * record out naturally, with each slot of `dll_info` one pointer-wide word.
 */
#ifndef SOLVANE_SOLVANE_H
#define SOLVANE_SOLVANE_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define SOLVANE_STATIC_ASSERT(condition, text) static_assert(condition, text)
extern "C" {
#else
#define SOLVANE_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

/* Holds where words are 32 bits wide (the documented sizes) and is passed over elsewhere. */
#if UINTPTR_MAX == 0xFFFFFFFFu
#define SOLVANE_ILP32_SIZE(type, octets) SOLVANE_STATIC_ASSERT(sizeof(type) == (octets), #type)
#else
#define SOLVANE_ILP32_SIZE(type, octets) SOLVANE_STATIC_ASSERT(sizeof(type) >= (octets), #type)
#endif

/* A truth value as the stack stores it: one octet, 0 or 1. */
typedef uint8_t tt_bool;

/* ------------------------------------------------------------------------------------------------------
 * Stack domains
 * ------------------------------------------------------------------------------------------------------ */

/* Numbers the domains of the stack and indexes every per-domain array.  ENTITY_OSA and ENTITY_PSEUDO_START
 * share a value: that is how the stack declares them.  Test `valid` of a registry row, not ENTITY_LAST. */
enum sdi_entity_enum {
    ENTITY_DEFAULT = 0,      /* infrastructure: operating system and test layers */
    ENTITY_STACK = 1,        /* the common stack domain, the largest */
    ENTITY_GSM_STACK = 2,
    ENTITY_W_STACK = 3,      /* UMTS */
    ENTITY_SIGNAL = 4,       /* application signals */
    ENTITY_TD_LTE_STACK = 5,
    ENTITY_IMS_STACK = 6,
    ENTITY_NR_STACK = 7,
    ENTITY_PSEUDO_START = 8, /* from here on no database */
    ENTITY_OSA = 8,
    ENTITY_USER = 9,
    ENTITY_LAST = 10
};

enum {
    TT_NO_DOMAINS = 8,           /* domains that have a database */
    TT_NO_MODULES = 256,         /* rows of a per-module text table */
    TT_NO_MODULE_STATES = 65536, /* rows of `module_states`: module number x 256 + state machine number */
    TT_ENUM_NAME_SIZE = 256      /* octets of a row of these tables, the terminating zero included */
};

/* One row of a message table: how a message code leads to the structure that the message carries. */
typedef struct tt_msg_row {
    uint32_t    msg_code;
    const char *msg_name;
    uint32_t    sap_code;
    const char *sap_name;
    const char *struct_name; /* a name of the domain's dictionary; empty when the message has no body */
} tt_msg_row;
SOLVANE_ILP32_SIZE(tt_msg_row, 20);

/* One row of a dense message index: row n has `index` n.  Rows 0 and the last are sentinels of code 0. */
typedef struct tt_msg_index_row {
    uint32_t index;
    uint32_t msg_code;
} tt_msg_index_row;
SOLVANE_ILP32_SIZE(tt_msg_index_row, 8);

/* The messages of a domain.  Only ENTITY_SIGNAL and ENTITY_TD_LTE_STACK have the index pair. */
typedef struct tt_msg_table {
    uint32_t                count;
    const tt_msg_row       *rows;
    uint32_t                index_count; /* two above `count`, or 0 */
    const tt_msg_index_row *index_rows;
} tt_msg_table;

/* A row of a per-module table: a zero-terminated enumeration name, or an empty text. */
typedef char tt_enum_name[TT_ENUM_NAME_SIZE];

/* The registry row of a domain: under which names the dictionary holds the enumerations that give meaning to
 * the numbers of a trace.  Names are never null in a valid row; "no such enumeration" is an empty text. */
typedef struct tt_entity_info {
    uint8_t             valid;               /* 1: filled; 0: the number has no domain.  One word wide */
    const char         *version_text;
    char               *uuid;                /* baseline of the domain's build; a writable copy of the row */
    const char         *file_code_enum;
    const char         *sap_enum;            /* service access points */
    const char         *msg_enum;            /* message ids */
    const char         *module_enum;
    const char         *channels_enum;       /* trace channels */
    const char         *error_actions_enum;  /* protocol error actions */
    const char         *peer_msg_param_enum; /* peer message parameters */
    const tt_enum_name *module_file_codes;   /* TT_NO_MODULES rows by module number; ENTITY_STACK only */
    const tt_enum_name *module_peer_msgs;
    const tt_enum_name *module_proto_errors;
    const tt_enum_name *module_timers;
    const tt_enum_name *module_fsms;
    const tt_enum_name *module_states;       /* TT_NO_MODULE_STATES rows: module number x 256 + machine number */
    const tt_msg_table *msg_table;           /* null for ENTITY_DEFAULT */
    uintptr_t           reserved;            /* 0 */
    const char         *context_struct;      /* the structure that lists the domain's context pointers */
} tt_entity_info;
SOLVANE_ILP32_SIZE(tt_entity_info, 76);

/* ------------------------------------------------------------------------------------------------------
 * The dictionary: every type of a domain as constant tables
 * ------------------------------------------------------------------------------------------------------ */

/* What a type is; stands in struct, member and type rows.  0 to 8 and 13 are the basic kinds. */
enum rw_kind {
    RW_KIND_UNSIGNED_LONG = 0,  /* 32 bits on every build, as the four rows below it say */
    RW_KIND_LONG = 1,
    RW_KIND_UNSIGNED_INT = 2,
    RW_KIND_INT = 3,
    RW_KIND_UNSIGNED_SHORT = 4,
    RW_KIND_SHORT = 5,
    RW_KIND_UNSIGNED_CHAR = 6,
    RW_KIND_CHAR = 7,
    RW_KIND_SIGNED_CHAR = 8,
    RW_KIND_STRUCT = 9,
    RW_KIND_UNION = 10,
    RW_KIND_ENUM = 11,
    RW_KIND_TYPEDEF = 12,
    RW_KIND_VOID = 13,          /* seen behind a pointer */
    RW_KIND_BIT_FIELD = 14      /* members only */
};

/* What a member does in its structure, and with it what `ref` holds. */
enum rw_role {
    RW_ROLE_PLAIN = 0,
    RW_ROLE_POINTER = 1,    /* ref: index of the counting member, RW_NO_REF when not counted */
    RW_ROLE_COUNT = 2,      /* how many elements a pointer member has */
    RW_ROLE_ARRAY = 3,      /* fixed array; ref: index of the presence member of an optional array */
    RW_ROLE_STRUCT = 4,     /* structure held in place */
    RW_ROLE_UNION = 5,      /* ref: index of the selecting member, RW_NO_REF when the stack names none */
    RW_ROLE_SELECTOR = 6,   /* selects the case of a union */
    RW_ROLE_OPTIONAL = 8,   /* ref: index of the presence member */
    RW_ROLE_PRESENCE = 9    /* presence flag of type `opt_present`, ahead of the member that it guards */
};
/* Inside a union `ref` of every role is the selector value for which the member holds, RW_NO_REF for none. */

#define RW_NO_REF UINT32_C(0xFFFF)
#define RW_NO_INDEX UINT32_C(0xFFFFFFFF)

enum RW_PTR_CLASS_ENUM { RW_PC_ARRAYOF = 0, RW_PC_POINTERTO = 1 };
enum RW_VAL_STAT_ENUM { RW_VS_VALID_VAL = 0, RW_VS_INVAL_ASSIGNED = 1, RW_VS_NOT_ASSIGNED = 2 };

/* One declarator level, outermost first. */
typedef struct rw_dim_row {
    uint32_t dim_class;        /* RW_PTR_CLASS_ENUM */
    uint32_t array_size_index; /* index into `offsize` of the octets of this level; RW_NO_INDEX at a pointer */
} rw_dim_row;
SOLVANE_ILP32_SIZE(rw_dim_row, 8);

typedef struct rw_member_row {
    const char       *name;
    uint32_t          offsize_index; /* into `offsize`: the octet offset; RW_NO_INDEX in a union; for a
                                        bit-field the index into `bit_map` */
    uint32_t          role;          /* rw_role */
    uint32_t          ref;           /* by role */
    uint32_t          has_rt_rule;   /* 1: the run-time type rules tell this member's type */
    uint32_t          rt_selector;   /* selector of those rules, else 0 */
    uint32_t          rt_tag;        /* run-time tag of the member's type, 0 for none */
    uint32_t          kind;          /* rw_kind of the declared type */
    const char       *type_name;     /* null for a bit-field */
    uint32_t          no_dims;
    const rw_dim_row *dims;
    uint32_t          type_index;    /* row of `structs`, `enums` or `types` by kind; RW_NO_INDEX for basic
                                        kinds; 0 for a bit-field */
} rw_member_row;
SOLVANE_ILP32_SIZE(rw_member_row, 48);

/* A structure or union. */
typedef struct rw_struct_row {
    const char          *name;
    uint32_t             kind;       /* RW_KIND_STRUCT or RW_KIND_UNION */
    uint32_t             size_index; /* into `offsize`: octets */
    uint32_t             reserved;   /* 0 */
    uint32_t             no_members;
    const rw_member_row *members;
} rw_struct_row;
SOLVANE_ILP32_SIZE(rw_struct_row, 24);

/* A name by which a type is known, typedefs included. */
typedef struct rw_type_row {
    const char       *name;
    uint32_t          rt_tag;
    uint32_t          kind;       /* rw_kind of the base */
    const char       *base_name;
    uint32_t          no_dims;
    const rw_dim_row *dims;
    uint32_t          type_index; /* as in rw_member_row */
} rw_type_row;
SOLVANE_ILP32_SIZE(rw_type_row, 28);

typedef struct rw_num_type {
    uint32_t valstat; /* RW_VAL_STAT_ENUM */
    int32_t  num;     /* meaningful with RW_VS_VALID_VAL */
} rw_num_type;

typedef struct rw_literal_row {
    const char *name;
    rw_num_type value;
} rw_literal_row;
SOLVANE_ILP32_SIZE(rw_literal_row, 12);

/* An enumeration.  Its row number is also the index of its size in `offsize`. */
typedef struct rw_enum_row {
    const char           *name;        /* the tag; an anonymous one has a number from 15000 on as text */
    uint16_t              ordinal;     /* row number; the low half of the word on a little-endian build */
    uint16_t              no_literals;
    const rw_literal_row *literals;
} rw_enum_row;
SOLVANE_ILP32_SIZE(rw_enum_row, 12);

/* How many elements stand behind a member whose declared type does not say it. */
typedef struct rw_rt_length {
    uint32_t word[4]; /* 0, 16, elements, 0 */
} rw_rt_length;

/* In a value whose run-time tag is key[1], the member with selector key[0] has the type `rt_type`. */
typedef struct rw_rt_rule_row {
    uint32_t        key_len;                     /* 2 */
    const uint16_t *key;                         /* selector, tag of the enclosing type */
    rw_rt_length  (*length_func)(const void *value); /* or null; `value` is the enclosing value */
    uint32_t        rt_type;                     /* id of a row of `rt_types`; 0 with a length_func */
} rw_rt_rule_row;
SOLVANE_ILP32_SIZE(rw_rt_rule_row, 16);

typedef struct rw_rt_type_row {
    uint32_t    rt_type; /* id */
    uint32_t    kind;    /* RW_KIND_TYPEDEF */
    const char *name;    /* "TT_RTYPE_" and the name of a row of `types` */
} rw_rt_type_row;
SOLVANE_ILP32_SIZE(rw_rt_type_row, 12);

/* ------------------------------------------------------------------------------------------------------
 * Where bit-fields and basic types lie
 * ------------------------------------------------------------------------------------------------------ */

enum { MTA_MAX_TOUPLE = 5 }; /* octets that a field of 32 bits can touch */

/* The part of a bit-field that lies in one octet. */
typedef struct mta_bit_touple_struct {
    uint8_t bit_num;  /* bits of the field not placed before this part; the width in the first part */
    uint8_t position; /* of the part's highest bit: octet k from `offset` on, bit 7 is k x 8, bit 0 k x 8 + 7 */
} mta_bit_touple_struct;

/* The place of one bit-field, most significant part first.  The target reports its layout in this form too. */
typedef struct mta_bit_map_struct {
    uint8_t               no_touple; /* used entries of `touple` */
    uint16_t              offset;    /* octets from the start of the structure to the field's first octet */
    uint16_t              no_bits;   /* declared width */
    mta_bit_touple_struct touple[MTA_MAX_TOUPLE];
} mta_bit_map_struct;
SOLVANE_STATIC_ASSERT(sizeof(mta_bit_map_struct) == 16, "mta_bit_map_struct");

/* Basic-type block: an index octet for each kind 0 to 14, each the offset in `pattern` of a size octet; behind
 * the size octet of the integer kinds stand the octets of a test value, 0x01020304 or 0x0102, as stored. */
enum { RW_BT_INDEX_SIZE = 15, RW_BT_PATTERN_MAX = 50 };
typedef struct rw_bt_info {
    uint8_t index[RW_BT_INDEX_SIZE];
    uint8_t pattern[RW_BT_PATTERN_MAX];
} rw_bt_info;
SOLVANE_STATIC_ASSERT(sizeof(rw_bt_info) == 65, "rw_bt_info");

typedef uint16_t rw_offsize_type;

/* All that is known of a domain's types.  There are two records a domain, target and tool; they point to the
 * same type tables and differ in `bt_info`, `offsize` and `bit_map`.  Those of the tool record tell how the
 * library's own compiler lays the types out; those of the target record are zeroed storage of the same size
 * that the host fills from the target's answers, and that the library never touches. */
typedef struct rw_debug_info_struct {
    char                 *uuid;       /* baseline; each record has a copy of its own */
    uint32_t              no_structs;
    const rw_struct_row  *structs;
    uint32_t              no_types;
    const rw_type_row    *types;
    uint32_t              no_enums;
    const rw_enum_row    *enums;
    rw_bt_info           *bt_info;
    uint32_t              no_offsize;
    const rw_offsize_type *offsize;   /* enumeration sizes; then by struct row its size and by member the
                                         offset and array sizes; then the array sizes of `types` */
    uint32_t              no_bit_map;
    mta_bit_map_struct   *bit_map;
    uint32_t              no_rt_rules;
    const rw_rt_rule_row *rt_rules;
    uint32_t              no_rt_types;
    const rw_rt_type_row *rt_types;
    uintptr_t             reserved;   /* 0 */
} rw_debug_info_struct;
SOLVANE_ILP32_SIZE(rw_debug_info_struct, 68); /* 17 words */

/* ------------------------------------------------------------------------------------------------------
 * Value texts: what the numbers of a field mean in words
 * ------------------------------------------------------------------------------------------------------ */

typedef struct tt_value_row {
    const char *text;
    uint32_t    value;
} tt_value_row;
SOLVANE_ILP32_SIZE(tt_value_row, 8);

#define TT_DEFAULT_SELECTOR UINT32_C(0xFFFFFFFF)

/* Texts that hold for one value of a selector. */
typedef struct tt_value_case {
    uint32_t            selector; /* TT_DEFAULT_SELECTOR for the default case */
    uint32_t            no_values;
    const tt_value_row *values;
} tt_value_case;
SOLVANE_ILP32_SIZE(tt_value_case, 12);

typedef struct tt_value_field {
    const char          *name;
    const char          *comment;   /* with its own double quotes, or null */
    uint32_t             no_values;
    const tt_value_row  *values;    /* unconditional texts */
    uint32_t             no_cases;
    const tt_value_case *cases;
} tt_value_field;
SOLVANE_ILP32_SIZE(tt_value_field, 24);

typedef struct tt_value_desc {
    const char           *comment;  /* on the structure as a whole, or null */
    uint32_t              no_values;
    const tt_value_row   *values;   /* of the structure as a whole */
    uint32_t              no_fields;
    const tt_value_field *fields;
} tt_value_desc;
SOLVANE_ILP32_SIZE(tt_value_desc, 20);

typedef struct tt_value_desc_row {
    const char          *name;   /* a structure name; empty in the end row */
    const tt_value_desc *record; /* null in the end row */
} tt_value_desc_row;
SOLVANE_ILP32_SIZE(tt_value_desc_row, 8);

typedef struct tt_value_desc_table {
    uint32_t                 count; /* the end row included */
    const tt_value_desc_row *rows;
} tt_value_desc_table;
SOLVANE_ILP32_SIZE(tt_value_desc_table, 8);

/* ------------------------------------------------------------------------------------------------------
 * The trace table
 * ------------------------------------------------------------------------------------------------------ */

enum tsc_db_item_status_enum {
    TSC_DIS_SINGLE = 0,   /* a statement without arguments */
    TSC_DIS_ARGS = 1,     /* a statement with arguments */
    TSC_DIS_USED = 0,     /* a second name of TSC_DIS_SINGLE */
    TSC_DIS_RESERVED = 0x80,
    TSC_DIS_HEAD = 0xFE,  /* the head item of a module */
    TSC_DIS_LAST = 0xFF   /* the closing item */
};

/* One trace statement of the target. */
typedef struct tsc_db_item_struct {
    uint32_t    trace_id;     /* the table is sorted by it, strictly ascending */
    const char *trace_format; /* printf-like, never null */
    uint32_t    status;       /* tsc_db_item_status_enum; the decoders never look at it */
    const char *file;         /* base name of the source file, never null, may be empty */
    int32_t     line;
} tsc_db_item_struct;
SOLVANE_ILP32_SIZE(tsc_db_item_struct, 20);

/* A module owns the block of 0x80000 ids from `start_trace_id` on. */
typedef struct tsc_db_mod_struct {
    uint32_t    start_trace_id;
    const char *mod_name;
    uint32_t    unit_num; /* 1 */
} tsc_db_mod_struct;
SOLVANE_ILP32_SIZE(tsc_db_mod_struct, 12);

typedef struct tsc_db_info_struct {
    const char               *db_name;  /* "tsc_db" */
    const tsc_db_item_struct *db;
    uint32_t                  total;    /* items, the closing one included */
    const tsc_db_mod_struct  *mod_list;
    uint32_t                  mod_num;
} tsc_db_info_struct;
SOLVANE_ILP32_SIZE(tsc_db_info_struct, 20);

/* What is known of a trace id; 0xFFFFFFFF, null, null, 0 for an unknown one. */
typedef struct tsc_trace_info {
    uint32_t    mod_row;  /* row of `mod_list` */
    const char *mod_name;
    const char *file;
    int32_t     line;
} tsc_trace_info;
SOLVANE_ILP32_SIZE(tsc_trace_info, 16);

/* The same with the format; null, 0, 0xFFFFFFFF, null, null, 0 for an unknown id. */
typedef struct tsc_trace_full_info {
    const char *trace_format;
    uint32_t    status;
    uint32_t    mod_row;
    const char *mod_name;
    const char *file;
    int32_t     line;
} tsc_trace_full_info;
SOLVANE_ILP32_SIZE(tsc_trace_full_info, 24);

/* ------------------------------------------------------------------------------------------------------
 * Codecs: cursors, inter-layer messages, peer rows
 * ------------------------------------------------------------------------------------------------------ */

/* Result of a decode, held where `err_hndl` of the unpack cursor points to. */
typedef struct PerError {
    uint32_t code;            /* 0 none; 1 soft: a value outside its constraint; 2 hard: the walk ended */
    uint32_t detail;          /* 1 whenever code is set */
    uint32_t aux;
    uint32_t must_understand; /* 1: the message held an unknown element that the receiver must understand */
} PerError;
SOLVANE_STATIC_ASSERT(sizeof(PerError) == 16, "PerError");

/* Where a pack function writes: the next bit is bit `bits & 7`, counted from the most significant one, of the
 * octet at `frame`.  The caller owes the room. */
typedef struct pack_info_struct {
    uint8_t     *frame;
    unsigned int bits; /* written so far */
} pack_info_struct;
SOLVANE_ILP32_SIZE(pack_info_struct, 8);

/* Where an unpack function reads. */
typedef struct unpack_info_struct {
    const uint8_t *frame;
    unsigned int   bits;     /* read so far */
    int32_t        fr_size;  /* octets from `frame` to the end of the message */
    void          *err_hndl; /* a PerError */
} unpack_info_struct;
SOLVANE_ILP32_SIZE(unpack_info_struct, 16);

/* Local parameters of an inter-layer message: for RRC a chain of flattened chunks. */
typedef struct tt_user_data_struct {
    uint8_t  ref_count;
    uint16_t no_local_params_ptr;   /* octets in the block */
    uint16_t local_params_ptr_size;
    uint8_t *local_params_ptr;
} tt_user_data_struct;
SOLVANE_ILP32_SIZE(tt_user_data_struct, 12);

/* The air-interface octets of an inter-layer message. */
typedef struct tt_pdu_data_struct {
    uint8_t  ref_count;
    uint8_t  header_len;
    uint8_t  tail_len;
    uint16_t no_peer_buff_ptr;   /* octets of the peer message */
    uint16_t peer_buff_ptr_size;
    uint8_t *peer_buff_ptr;
} tt_pdu_data_struct;
SOLVANE_ILP32_SIZE(tt_pdu_data_struct, 12);

/* An inter-layer message of the stack. */
typedef struct tt_msg_struct {
    uint8_t             src_entity_id;  /* sdi_entity_enum */
    uint8_t             dest_entity_id; /* sdi_entity_enum */
    uint8_t             src_mod_id;
    uint8_t             dest_mod_id;
    uint8_t             sap_id;         /* stack_sap_enum */
    uint16_t            msg_id;         /* stack_msg_enum */
    tt_user_data_struct local_params;
    tt_pdu_data_struct  peer_buff;
} tt_msg_struct;
SOLVANE_ILP32_SIZE(tt_msg_struct, 32);

typedef void (*tt_pack_func)(pack_info_struct *cursor, const void *value);
typedef void (*tt_unpack_func)(void *value, unpack_info_struct *cursor);

/* A structure that the library can turn into bits and back. */
typedef struct tt_peer_row {
    const char    *name;     /* unique in the table, also the name in the dictionary */
    uint32_t       size;     /* octets of the structure in memory */
    tt_pack_func   pack;
    tt_unpack_func unpack;
    uintptr_t      reserved; /* written 0; the host's own */
} tt_peer_row;
SOLVANE_ILP32_SIZE(tt_peer_row, 20);

typedef struct tt_peer_table_struct {
    uint32_t     count;
    tt_peer_row *rows; /* moves while init_dll runs, stays afterwards */
} tt_peer_table_struct;
SOLVANE_ILP32_SIZE(tt_peer_table_struct, 8);

/* ------------------------------------------------------------------------------------------------------
 * Channels to the agent on the target
 * ------------------------------------------------------------------------------------------------------ */

enum com_direction { COM_RECEIVE = 0, COM_TRANSMIT = 1, COM_BOTH = 2 };
enum com_driver_row { COM_DRIVER_SERIAL = 0, COM_DRIVER_TCP = 1, COM_DRIVER_SOCKET = 2 };

typedef struct com_tcp_attr {
    tt_bool     server;
    const char *address;
    uint16_t    port;
} com_tcp_attr;

typedef struct com_serial_attr { /* the settings are results of the parse slots */
    uint32_t unused;
    uint32_t baud_rate;
    uint32_t parity;
    uint32_t stop_bits;
    uint32_t flow_control;
    uint32_t char_size;
    uint32_t input_mode;
} com_serial_attr;

/* What opens a physical channel; com_pch_add copies it. */
typedef struct com_pch_attr {
    uint32_t direction; /* com_direction */
    uint32_t driver;    /* com_driver_row */
    union {
        com_tcp_attr    tcp;
        com_serial_attr serial;
        uint32_t        words[10];
    } u;
} com_pch_attr;
SOLVANE_STATIC_ASSERT(sizeof(com_pch_attr) == 48, "com_pch_attr");

/* Receives a whole packet, on the reader thread of the channel.  `packet` is gone when it returns. */
typedef void (*com_lch_callback)(uint8_t *packet, uint32_t length, uint8_t lch_domain_id, uint8_t lch);

/* A logical channel to be opened by the host. */
typedef struct ttcore_lch {
    uint32_t lch_desc_index;
    uint32_t direction; /* com_direction, as the host sees it */
    uint8_t  lch_ready;
    uint8_t  lch_flag;
    uint32_t lch_word;
} ttcore_lch;
SOLVANE_STATIC_ASSERT(sizeof(ttcore_lch) == 16, "ttcore_lch");

/* A physical channel to be opened by the host, with its logical channels. */
typedef struct ttcore_pch {
    const char   *name;
    uint32_t      pch_desc_index;
    com_pch_attr *attr;       /* for com_pch_add, as the host sees it */
    uint32_t      unused;     /* not set */
    uint32_t      no_of_lch;
    ttcore_lch   *lch_list;
} ttcore_pch;
SOLVANE_ILP32_SIZE(ttcore_pch, 24);

typedef struct comm_info_struct {
    uint32_t    no_of_pch;
    ttcore_pch *ttcore_pch_list;
    uint32_t    infra_word[2];  /* 0 */
    int32_t     stack_word;     /* -1 */
    uint8_t     stack_octet;    /* 0 */
    int32_t     stack_word_2;   /* -1 */
    uint8_t     stack_octet_2;  /* 0 */
    uint8_t     stack_octet_3;  /* 0 */
} comm_info_struct;
SOLVANE_ILP32_SIZE(comm_info_struct, 32);

/* ------------------------------------------------------------------------------------------------------
 * The exported records
 * ------------------------------------------------------------------------------------------------------ */

/* Services that the library reaches memory and formatted printing through.  Complete at load time; the host
 * may put its own routines in before it calls init_dll.  The trailing arguments of the memory slots are an
 * allocation tag (flag, source-file code, line) for a host that tracks leaks; the default slots ignore it.  The six
 * memory slots belong together, the defaults keep a heap of their own: replace all of them or none, and release
 * what one of them gave through `free` alone. */
typedef struct dll_info_version_struct {
    const char *version_text;   /* "1.0" */
    uint32_t    version_number; /* 1 */
    void *(*alloc)(size_t size, uint8_t flag, uint16_t file_code, uint32_t line);
    void *(*alloc_clear)(size_t size, uint8_t flag, uint16_t file_code, uint32_t line);
    void *(*realloc)(void *block, size_t new_size, size_t old_size, uint8_t flag, uint16_t file_code, uint32_t line);
    void *(*realloc_clear)(void *block, size_t new_size, size_t old_size, uint8_t flag, uint16_t file_code,
                           uint32_t line);
    void  (*free)(void *block, uint8_t flag, uint16_t file_code, uint32_t line); /* null is ignored */
    void  (*free_tagged)(void *block, uint8_t flag, uint16_t file_code, uint32_t line);
    void *(*memset)(void *block, int octet, size_t size);
    void *(*memset_clear)(void *block, int octet, size_t size);
    void *(*memcpy)(void *to, const void *from, size_t size);
    int   (*memcmp)(const void *one, const void *other, size_t size);
    void  (*exit)(int status);
    int   (*sprintf)(char *buffer, const char *format, ...);
} dll_info_version_struct;
SOLVANE_ILP32_SIZE(dll_info_version_struct, 56);

typedef struct tt_offsize_table { /* one record a domain, in the order of sdi_entity_enum */
    rw_debug_info_struct *records;
    uint32_t              count; /* TT_NO_DOMAINS */
} tt_offsize_table;

typedef struct tt_value_desc_tables { /* one table a domain, in the order of sdi_entity_enum */
    const tt_value_desc_table *const *tables;
    uint32_t                          count; /* TT_NO_DOMAINS */
} tt_value_desc_tables;

/* The interface record, 61 words, all zero until init_dll has run.  Numbers are the documented slot numbers.
 * Every look-up answers 0 or null at a miss, silently. */
typedef struct dll_info_struct {
    /*  1 */ uint8_t no_entities; /* rows of entity_info; takes up a whole word */
    /*  2 */ const tt_offsize_table *tool_offsize;
    /*  3 */ const tt_entity_info *entity_info;
    /*  4 */ const char *var_access_root;  /* structure at which the target's variables start */
    /*  5 */ const char *entity_enum_name; /* "sdi_entity_enum" */
    /*  6 */ uintptr_t reserved_6;
    /*  7 */ const tt_offsize_table *target_offsize;
    /*  8 */ const char *(*tt_peer_struct_name)(const tt_msg_struct *ilm); /* name of a peer row, or null */
    /*  9 */ uintptr_t reserved_9;
    /* 10 */ uintptr_t (*stack_open_hook)(uintptr_t value); /* hands its argument back */
    /* 11 */ void (*stack_close_hook)(void);
    /* 12 */ void (*com_init)(void);
    /* 13 */ int32_t (*com_pch_add)(const com_pch_attr *attr); /* index of the channel, or -1 */
    /* 14 */ void (*com_pch_start)(int32_t pch, uint32_t entry, uint32_t priority, uint32_t stack_size);
    /* 15 */ void (*com_pch_stop)(int32_t pch);
    /* 16 */ void (*com_pch_remove)(int32_t pch);
    /* 17 */ int32_t (*com_lch_add)(int32_t lch_domain_id, int32_t lch, int32_t pch, uint32_t direction,
                                    com_lch_callback callback, uint8_t *buffer); /* logical channels in use */
    /* 18 */ tt_bool (*com_lch_connect)(int32_t lch_domain_id, int32_t lch);
    /* 19 */ uint32_t (*com_lch_write)(int32_t lch_domain_id, int32_t lch, const uint8_t *data, uint32_t length);
    /* 20 */ void (*com_lch_disconnect)(int32_t lch_domain_id, int32_t lch);
    /* 21 */ int32_t (*com_lch_remove)(int32_t lch_domain_id, int32_t lch); /* logical channels in use */
    /* 22 */ uint32_t (*parse_baud_rate)(const char *text);    /* index, 23 for an invalid text */
    /* 23 */ uint32_t (*parse_parity)(const char *text);       /* index, 5 */
    /* 24 */ uint32_t (*parse_stop_bits)(const char *text);    /* index, 3 */
    /* 25 */ uint32_t (*parse_flow_control)(const char *text); /* index, 4 */
    /* 26 */ uint32_t (*parse_input_mode)(const char *text);   /* index, 2 */
    /* 27 */ uint32_t (*parse_char_size)(const char *text);    /* index, 5 */
    /* 28 */ comm_info_struct *(*tt_comm_info_get)(void); /* built at the first call, the same afterwards */
    /* 29 */ tt_bool (*tt_comm_info_free)(void);          /* true */
    /* 30 */ tt_bool (*tt_comm_info_reset)(void);         /* true */
    /* 31 */ uintptr_t (*tt_comm_info_hook)(uintptr_t value); /* hands its argument back */
    /* 32 */ uint32_t (*gprs_block_pack)(const char *struct_name, pack_info_struct *cursor, const void *value);
    /* 33 */ uint32_t (*gprs_block_unpack)(const char *struct_name, void *value, unpack_info_struct *cursor);
    /* 34 */ uint32_t (*gprs_struct_size)(const char *struct_name);
    /* 35 */ const char *(*gprs_block_identify)(uintptr_t ignored, unpack_info_struct *cursor);
    /* 36 */ const tt_value_desc_tables *value_desc_tables;
    /* 37 */ uint32_t (*db_struct_known)(int32_t domain, const char *struct_name);
    /* 38 */ const char *(*db_struct_value_text)(int32_t domain, const char *struct_name, uint32_t value);
    /* 39 */ const char *(*db_field_value_text)(int32_t domain, const char *struct_name, const char *field,
                                                uint32_t value);
    /* 40 */ const char *(*db_field_case_value_text)(int32_t domain, const char *struct_name, const char *field,
                                                     uint32_t selector, uint32_t value);
    /* 41 */ tt_bool (*dll_feature_supported)(const char *tag);
    /* 42 */ const char *(*db_struct_comment)(int32_t domain, const char *struct_name);
    /* 43 */ const char *(*db_field_comment)(int32_t domain, const char *struct_name, const char *field);
    /* 44 */ uintptr_t reserved_44;
    /* 45 */ uintptr_t reserved_45;
    /* 46 */ const char *(*tsc_trace_text)(const uint8_t *data);
    /* 47 */ uint32_t (*signal_msg_code_to_index)(uint16_t msg_code); /* 0 at a miss */
    /* 48 */ uint32_t (*signal_msg_index_to_code)(uint16_t index);    /* 65535 at a miss */
    /* 49 */ uint32_t (*lte_msg_code_to_index)(uint16_t msg_code);    /* 0 at a miss */
    /* 50 */ uint32_t (*lte_msg_index_to_code)(uint16_t index);       /* 0 at a miss */
    /* `kind` of the next two is a word that the caller sets to 0; its first octet becomes 1 or 2 for the table that
     * knows the name, and is 0 for an unknown one. */
    /* 51 */ uint32_t (*air_msg_pack)(const char *struct_name, pack_info_struct *cursor, const void *value,
                                      uint32_t *kind); /* octets written */
    /* 52 */ uint32_t (*air_msg_unpack)(const char *struct_name, void *value, unpack_info_struct *cursor,
                                        uint32_t *kind); /* octets read */
    /* 53 */ uint32_t (*air_msg_size)(const char *struct_name, uint8_t *found);
    /* 54 */ const char *(*tsc_trace_text_int)(const uint8_t *data, uint32_t length);
    /* 55 */ const char *(*tsc_trace_text_info)(const uint8_t *data, tsc_trace_info *info);
    /* 56 */ const char *(*tsc_trace_text_int_info)(const uint8_t *data, uint32_t length, tsc_trace_info *info);
    /* 57 */ tt_bool (*tsc_trace_lookup)(uint32_t trace_id, tsc_trace_info *info);
    /* 58 */ tt_bool (*tsc_trace_lookup_full)(uint32_t trace_id, tsc_trace_full_info *info);
    /* 59 */ const tsc_db_info_struct *(*tsc_db_get)(void);
    /* 60 */ uint32_t (*tsc_db_total)(void);
    /* 61 */ uint32_t (*tsc_db_mod_num)(void);
} dll_info_struct;
SOLVANE_STATIC_ASSERT(sizeof(dll_info_struct) == 61 * sizeof(void *), "every slot is one word");
SOLVANE_STATIC_ASSERT(offsetof(dll_info_struct, tsc_db_mod_num) == 60 * sizeof(void *), "slot order");

#if defined _WIN32 || !defined __GNUC__
#define SOLVANE_EXPORT
#else
#define SOLVANE_EXPORT __attribute__((visibility("default")))
#endif

SOLVANE_EXPORT void init_dll(void);
SOLVANE_EXPORT void deinit_dll(void);
SOLVANE_EXPORT extern dll_info_struct dll_info;
SOLVANE_EXPORT extern dll_info_version_struct dll_info_version;
SOLVANE_EXPORT extern tt_peer_table_struct tt_peer_table;

#ifdef __cplusplus
}
#endif

#endif
