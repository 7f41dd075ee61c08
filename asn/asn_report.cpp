// The error sink and the standard reports.
#include "asn_report.h"

#include <cstdio>
#include <cstring>

#include "solvane/solvane.h"

namespace {

void write_to_standard_error(const char *text, int /*severity*/)
{
    std::fprintf(stderr, "%s", text);
}

AsnErrorHandler error_sink = write_to_standard_error;

} // namespace

AsnErrorHandler AsnSetErrorHandler(AsnErrorHandler handler)
{
    const AsnErrorHandler previous = error_sink;
    error_sink                     = handler ? handler : write_to_standard_error;
    return previous;
}

void AsnErrorPrint(const char *text)
{
    error_sink(text, ASN_ERROR);
}

void AsnWarnPrint(const char *text)
{
    error_sink(text, ASN_WARNING);
}

void report_out_of_bounds(const char *name)
{
    static const char before[] = "\nThe data passed for packing ";
    static const char behind[] = " does not lie within bounds\n\n";

    char text[1024];
    char head[sizeof text - sizeof before - sizeof behind + 2]; // a longer name loses its end: the slot has no limit
    if (std::strlen(name) >= sizeof head) {
        std::memcpy(head, name, sizeof head - 1);
        head[sizeof head - 1] = 0;
        name                  = head;
    }
    dll_info_version.sprintf(text, "%s%s%s", before, name, behind);
    error_sink(text, ASN_ERROR);
}

void AsnAssert(bool condition)
{
    if (condition) [[likely]]
        return;
    AsnErrorPrint("Assertion failed !\n");
    dll_info_version.exit(1);
}
