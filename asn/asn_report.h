// Where the ASN.1 run-time says what it has to say.  All texts go to one process-wide sink, standard error unless
// it was replaced; nothing here is locked, so replace the sink before threads decode.
//
// An encode never fails and never stops: what does not lie within its bounds is reported here and goes out.
#pragma once

enum asn_severity { ASN_WARNING = 0, ASN_ERROR = 1 };

/// Receives a text, which is gone when it returns, and its asn_severity.
using AsnErrorHandler = void (*)(const char *text, int severity);

/// Replaces the sink and answers the one before.  Null brings back the default, which writes the bare text to
/// standard error whatever the severity.
AsnErrorHandler AsnSetErrorHandler(AsnErrorHandler handler);

void AsnErrorPrint(const char *text); ///< to the sink, as ASN_ERROR
void AsnWarnPrint(const char *text);  ///< to the sink, as ASN_WARNING

/// Reports a value of the type `name` that a pack function has found outside its constraint.
void report_out_of_bounds(const char *name);

/// Unless `condition` holds, reports "Assertion failed !" and calls the exit slot with 1.  Returns when that does.
void AsnAssert(bool condition);
