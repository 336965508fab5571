// Reader of a module's resource file (PiPL), from which a host learns a module's name and entry
// point before loading it.
//
// The file lies beside the module, with the same name and the extension ".pipl". All integers are
// 32 bits, little-endian:
//
//   "PIPL", resource id, number of properties; then for each property
//   vendor, key (four bytes each, as text), property id, length in bytes, the data,
//   padded with zeros to a multiple of four.
//
// The data of a text is one length byte and the text's bytes.
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
    std::vector<PiplProperty> properties; // in the order of the file

    // Throw std::runtime_error if the property is missing or has another size.
    std::string text(const std::string& key) const;
    A_u_long number(const std::string& key) const;
};

// Throws std::runtime_error, with the file's name, if the file is malformed.
Pipl readPipl(const std::filesystem::path& path);

} // namespace hostkit
