#include "platform/utf16.h"

#include <bit>
#include <utility>

#include <iconv.h>

namespace platform {

namespace {

constexpr const char* utf8Name = "UTF-8";
constexpr const char* utf16Name =
    std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

template<class To, class From>
Converted<std::basic_string<To>> convert(const char* toName, const char* fromName,
                                         std::basic_string_view<From> text) {
    const iconv_t converter = iconv_open(toName, fromName);
    if (converter == reinterpret_cast<iconv_t>(-1)) // NOLINT(performance-no-int-to-ptr)
        return {{}, false};
    // One unit of UTF-16 takes up to three bytes. Units that are skipped below keep the "?".
    std::basic_string<To> result(text.size() * 3, To{'?'});
    bool isExact = true;
    char* in = const_cast<char*>(reinterpret_cast<const char*>(text.data()));
    std::size_t inBytes = text.size() * sizeof(From);
    char* out = reinterpret_cast<char*>(result.data());
    std::size_t outBytes = result.size() * sizeof(To);
    while (iconv(converter, &in, &inBytes, &out, &outBytes) == static_cast<std::size_t>(-1)) {
        isExact = false;
        in += sizeof(From);
        inBytes -= sizeof(From);
        out += sizeof(To);
        outBytes -= sizeof(To);
    }
    iconv_close(converter);
    result.resize(result.size() - outBytes / sizeof(To));
    return {std::move(result), isExact};
}

} // namespace

Converted<std::string> toUtf8(std::u16string_view text) {
    return convert<char>(utf8Name, utf16Name, text);
}

Converted<std::u16string> toUtf16(std::string_view text) {
    return convert<char16_t>(utf16Name, utf8Name, text);
}

} // namespace platform
