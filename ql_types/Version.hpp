// The library's version and build date, written into the binary when it is built.
#pragma once

/// The version of this library, e.g. "0.1.0".
extern const char* const ql_types_version;
/// When this binary was configured, in UTC.
extern const char* const ql_types_build_date;
