// A module's resource: how a host learns of it before it loads it.
//
// The file lies beside the module, under the module's name with the ending ".pipl". All integers
// are 32 bits, little-endian:
//
//   "PIPL", resource id, number of properties; then for each property
//   vendor, key (four bytes each, as text), property id, length in bytes, the data,
//   padded with zeros to a multiple of four.
//
// A text's data is one byte of length and its bytes.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "sdk/pf_types.h"

namespace hostkit {

struct PiplProperty {
    std::string vendor;
    std::string key;
    std::string data; // raw bytes
};

struct Pipl {
    A_long id = 0;
    std::vector<PiplProperty> properties; // in the file's order

    // Both throw std::runtime_error when the property is missing or of another size.
    std::string text(const std::string& key) const;
    A_u_long number(const std::string& key) const;
};

// Throws std::runtime_error, with the file's name, for what is no such file.
Pipl readPipl(const std::filesystem::path& path);

} // namespace hostkit
