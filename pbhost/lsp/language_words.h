// The words of the kernel language with their explanations, for hover and completion.
#pragma once

#include <span>
#include <string_view>

namespace pbhost {

struct LanguageWord {
    std::string_view name;
    std::string_view signature; // as it is written
    std::string_view text;      // one sentence
};

std::span<const LanguageWord> builtInFunctions();
std::span<const LanguageWord> languageTypes();
std::span<const LanguageWord> languageKeywords();
std::span<const LanguageWord> parameterKeys();
std::span<const LanguageWord> programKeys();
std::span<const LanguageWord> uiHints();        // of aeUIControl
std::span<const LanguageWord> parameterTypes(); // of parameterType

// The word with that name in a list; null if there is none.
const LanguageWord* findWordIn(std::span<const LanguageWord> words, std::string_view name);

} // namespace pbhost
