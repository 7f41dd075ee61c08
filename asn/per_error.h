// The error channel of a decode.
//
// `err_hndl` of the unpack cursor points to the PerError in force.  A decoder that calls another one puts a local
// record there for the time of the call and merges it into the outer one afterwards:
//
//     void *const outer = stream->err_hndl;
//     PerError    local{};
//     stream->err_hndl = &local;
//     Child_unpack(&value->child, stream);
//     stream->err_hndl = outer;
//     if (per_merge_error(&local, outer)) return;
//
// So the walk goes on after a soft error and unwinds from a hard one, and the outermost record holds the first soft
// or the last hard one.  A cursor without a record (null) drops its errors.
#pragma once

#include <cstdint>

#include "solvane/solvane.h"

enum per_error_code : std::uint32_t {
    PER_NO_ERROR   = 0,
    PER_SOFT_ERROR = 1, ///< a value outside its constraint; the walk goes on
    PER_HARD_ERROR = 2  ///< the frame cannot be walked any further
};

/// Records an error at the cursor, whatever stood there before; `aux` and `must_understand` keep their values.
inline void per_set_error(const unpack_info_struct *stream, per_error_code code)
{
    if (auto *const error = static_cast<PerError *>(stream->err_hndl)) {
        error->code   = code;
        error->detail = 1;
    }
}

/// The part of per_merge_error behind an error.
std::uint32_t per_merge_failure(PerError *local, void *outer);

/* Merges
 *   local   the record that was in force during the call; its code is 0 afterwards
 *   outer   the record that is in force again, or null
 *   answer  1 after a hard error: the caller returns at once; else 0
 *   carries `code` and `detail`: a soft error when `outer` has none yet, a hard one always  */
inline std::uint32_t per_merge_error(PerError *local, void *outer)
{
    return local->code == PER_NO_ERROR ? 0 : per_merge_failure(local, outer);
}

/// per_merge_error after an optional member, whose presence flag stays as it is.
inline std::uint32_t per_merge_error_opt(PerError *local, void *outer, const void * /*presence*/)
{
    return per_merge_error(local, outer);
}

/// per_merge_error after a member with a DEFAULT of string type: any error sets `*flag` to 1, and with it the
/// default applies.
inline std::uint32_t per_merge_error_flag(PerError *local, void *outer, std::uint8_t *flag)
{
    if (local->code == PER_SOFT_ERROR || local->code == PER_HARD_ERROR)
        *flag = 1;
    return per_merge_error(local, outer);
}

/// Records a hard error with `aux` when unchecked reads have passed the end of the frame, unless there is one
/// already; `detail` keeps its value.  The test is on fr_size in bits as a signed 32-bit word.
void per_check_underrun(const unpack_info_struct *stream, std::uint32_t aux);
