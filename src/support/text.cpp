#include "support/text.h"

namespace {

template<class String>
String join(const String& head, std::basic_string_view<typename String::value_type> tail) {
    String whole;
    whole.reserve(head.size() + tail.size());
    return whole.append(head).append(tail);
}

} // namespace

NarrowString concatenate(const NarrowString& head, const char* tail) {
    return join(head, std::string_view(tail));
}

WideString concatenate(const WideString& head, const char16_t* tail) {
    return join(head, std::u16string_view(tail));
}
