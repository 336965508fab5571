// The words of a driver's message in the kernel language: the generated text has other names for
// some of them.
#pragma once

#include <string>
#include <string_view>

namespace pbhost {

class KernelWords {
public:
    // A word that the file itself contains is kept. The text must outlive the object.
    explicit KernelWords(std::string_view fileText) : file_(fileText) {}

    // GLSL's names of types and functions become the kernel language's, and the generator's
    // prefixes are removed.
    std::string replacedIn(std::string_view text) const;

    // The same for a whole message, with GLSL's name beside the first type that is not part of a
    // quoted call; GLSL's terms for kinds of tokens are written in words.
    std::string explained(std::string_view message) const;

private:
    std::string replace(std::string_view text, bool hasNames) const;
    std::string kernelWord(std::string_view word) const;

    std::string_view file_;
};

} // namespace pbhost
