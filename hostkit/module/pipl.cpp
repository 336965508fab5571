#include "hostkit/module/pipl.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace hostkit {

namespace {

// Reads the fields of the file in order.
class Reader {
public:
    explicit Reader(std::string_view all) : rest_(all) {}

    std::string_view bytes(std::size_t count, const std::string& what) {
        if (count > rest_.size())
            throw std::runtime_error("the file ends inside " + what);
        const std::string_view taken = rest_.substr(0, count);
        rest_.remove_prefix(count);
        return taken;
    }

    A_u_long number(const std::string& what) {
        A_u_long value = 0;
        unsigned shift = 0;
        for (const char byte : bytes(4, what)) {
            value |= static_cast<A_u_long>(static_cast<unsigned char>(byte)) << shift;
            shift += 8;
        }
        return value;
    }

    void padding(std::size_t count, const std::string& what) {
        if (bytes(count, what).find_first_not_of('\0') != std::string_view::npos)
            throw std::runtime_error("there are bytes other than 0 in " + what);
    }

    void end() const {
        if (!rest_.empty())
            throw std::runtime_error(std::to_string(rest_.size()) + " bytes too many");
    }

private:
    std::string_view rest_;
};

PiplProperty readProperty(Reader& reader, const std::string& what) {
    PiplProperty property;
    property.vendor = reader.bytes(4, "the vendor of " + what);
    property.key = reader.bytes(4, "the key of " + what);
    reader.number("the id of " + what);
    const std::size_t length = reader.number("the length of " + what);
    property.data = reader.bytes(length, "the data of " + what);
    reader.padding((4 - length % 4) % 4, "the padding of " + what);
    return property;
}

const PiplProperty* findProperty(const std::vector<PiplProperty>& all, const std::string& key) {
    const auto found = std::ranges::find(all, key, &PiplProperty::key);
    return found == all.end() ? nullptr : &*found;
}

Pipl parse(std::string_view all) {
    Reader reader(all);
    if (reader.bytes(4, "the signature") != "PIPL")
        throw std::runtime_error("it does not begin with PIPL");
    Pipl pipl;
    pipl.id = static_cast<A_long>(reader.number("the resource's id"));
    const A_u_long count = reader.number("the number of properties");
    for (A_u_long i = 0; i < count; ++i) {
        PiplProperty property = readProperty(reader, "property " + std::to_string(i));
        if (findProperty(pipl.properties, property.key) != nullptr)
            throw std::runtime_error("property '" + property.key + "' occurs twice");
        pipl.properties.push_back(std::move(property));
    }
    reader.end();
    return pipl;
}

std::string readWhole(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string all{std::istreambuf_iterator<char>(file), {}};
    // On some systems, opening a folder succeeds and only reading fails.
    if (!file.is_open() || file.bad() || std::filesystem::is_directory(path))
        throw std::runtime_error("the file cannot be read");
    return all;
}

const std::string& dataOf(const Pipl& pipl, const std::string& key) {
    const PiplProperty* property = findProperty(pipl.properties, key);
    if (property == nullptr)
        throw std::runtime_error("property '" + key + "' is missing");
    return property->data;
}

} // namespace

std::string Pipl::text(const std::string& key) const {
    const std::string& data = dataOf(*this, key);
    if (data.empty() || static_cast<unsigned char>(data[0]) != data.size() - 1)
        throw std::runtime_error("property '" + key + "' is not a text of its stated length");
    if (data.find('\0', 1) != std::string::npos)
        throw std::runtime_error("property '" + key + "' contains a zero byte in its text");
    return data.substr(1);
}

A_u_long Pipl::number(const std::string& key) const {
    const std::string& data = dataOf(*this, key);
    if (data.size() != 4)
        throw std::runtime_error("property '" + key + "' is not a number of four bytes");
    return Reader(data).number(key);
}

Pipl readPipl(const std::filesystem::path& path) {
    try {
        return parse(readWhole(path));
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(path.string() + ": " + error.what());
    }
}

} // namespace hostkit
