// The rarely taken half of the error channel.
#include "per_error.h"

std::uint32_t per_merge_failure(PerError *local, void *outer)
{
    const std::uint32_t code  = local->code;
    auto *const         error = static_cast<PerError *>(outer);
    if (error && (code == PER_HARD_ERROR || (code == PER_SOFT_ERROR && error->code == PER_NO_ERROR))) {
        error->code   = code;
        error->detail = local->detail;
    }
    local->code = PER_NO_ERROR;
    return code == PER_HARD_ERROR;
}

void per_check_underrun(const unpack_info_struct *stream, std::uint32_t aux)
{
    const auto  size  = static_cast<std::int32_t>(static_cast<std::uint32_t>(stream->fr_size) * 8);
    auto *const error = static_cast<PerError *>(stream->err_hndl);
    if (size < 0 && error && error->code != PER_HARD_ERROR) {
        error->aux  = aux;
        error->code = PER_HARD_ERROR;
    }
}
