// Writes the module's resource: a build step that runs when the table in plugin_facts.h has
// changed.
//
// All integers are 32 bits, little-endian: "PIPL", the resource's id, the number of properties;
// then for each the vendor, the key, the property's id, the length of the data in bytes, and the
// data, padded with zeros to a multiple of four. A text is one length byte and its bytes.
#include <cstdio>
#include <fstream>
#include <string>

#include "shell/plugin_facts.h"

namespace {

std::string bytesOf(std::uint32_t number) {
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(number >> shift & 0xFF);
    return bytes;
}

std::string dataOf(const PiplEntry& entry) {
    if (entry.text == nullptr)
        return bytesOf(entry.number);
    const std::string text = entry.text;
    return static_cast<char>(text.size()) + text;
}

std::string resource() {
    std::string all = "PIPL" + bytesOf(piplResourceId) + bytesOf(piplEntries.size());
    for (const PiplEntry& entry : piplEntries) {
        const std::string data = dataOf(entry);
        all += piplVendor + std::string(entry.key) + bytesOf(0);
        all += bytesOf(static_cast<std::uint32_t>(data.size())) + data;
        all.append((4 - data.size() % 4) % 4, '\0');
    }
    return all;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: write_pipl FILE\n", stderr);
        return 2;
    }
    std::ofstream file(argv[1], std::ios::binary);
    file << resource();
    if (!file.flush()) {
        std::fprintf(stderr, "write_pipl: %s cannot be written\n", argv[1]);
        return 1;
    }
}
