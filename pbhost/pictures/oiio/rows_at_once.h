#pragma once

namespace pbhost {

// Rows that are read or written at once: enough for the library's threads, few enough that the
// memory for them is small beside the picture. A multiple of the rows that formats compress
// together.
inline constexpr int rowsAtOnce = 256;

} // namespace pbhost
