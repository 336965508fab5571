#include "engine/program/varying_count.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/program/glsl_texts.h"
#include "pixelbender/shader_reader.h"
#include "pixelbender/types.h"

namespace {

struct Token {
    std::string_view text;
    bool isDirective; // on a preprocessor line
};

using Tokens = std::span<const Token>;
using Number = std::optional<std::int64_t>;

// Collects the tokens of a text without blanks.
class TokenCollector : public ShaderReader::Parser {
public:
    bool parse(ShaderReader&, std::int32_t, ShaderReader::TokenKind kind, ShaderReader::State state,
               std::string_view token) override {
        if (kind != ShaderReader::Whitespace && token != " " && token != "\n")
            tokens.push_back({token, state == ShaderReader::Preprocessor});
        return false;
    }

    std::vector<Token> tokens;
};

constexpr std::int64_t largestNumber = std::int64_t{1} << 31;

Number limited(std::int64_t number) {
    return std::clamp(number, -largestNumber, largestNumber);
}

Number combined(std::string_view sign, Number left, Number right) {
    if (!left || !right || (sign == "/" && *right == 0))
        return std::nullopt;
    if (sign == "+")
        return limited(*left + *right);
    if (sign == "-")
        return limited(*left - *right);
    return limited(sign == "*" ? *left * *right : *left / *right);
}

// The expressions of constants and macros, by name, evaluated when the size of an array uses them.
class Constants {
public:
    void define(std::string_view name, Tokens expression) { expressions_[name] = expression; }

    Number value(Tokens expression) {
        atomsLeft_ = mostAtoms;
        return whole(expression);
    }

private:
    Number whole(Tokens expression) {
        const Number number = sum(expression);
        return expression.empty() ? number : std::nullopt;
    }

    Number sum(Tokens& rest) {
        Number left = product(rest);
        while (!rest.empty() && (rest[0].text == "+" || rest[0].text == "-")) {
            const std::string_view sign = take(rest);
            left = combined(sign, left, product(rest));
        }
        return left;
    }

    Number product(Tokens& rest) {
        Number left = atom(rest);
        while (!rest.empty() && (rest[0].text == "*" || rest[0].text == "/")) {
            const std::string_view sign = take(rest);
            left = combined(sign, left, atom(rest));
        }
        return left;
    }

    Number atom(Tokens& rest) {
        if (rest.empty() || --atomsLeft_ < 0)
            return std::nullopt;
        const std::string_view token = take(rest);
        if (token == "(") {
            const Number inner = sum(rest);
            return !rest.empty() && take(rest) == ")" ? inner : std::nullopt;
        }
        if (const auto found = expressions_.find(token); found != expressions_.end())
            return whole(found->second);
        std::int64_t number = 0;
        const char* end = token.data() + token.size();
        const auto read = std::from_chars(token.data(), end, number);
        return read.ec == std::errc() && read.ptr == end ? limited(number) : std::nullopt;
    }

    static std::string_view take(Tokens& rest) {
        const std::string_view token = rest[0].text;
        rest = rest.subspan(1);
        return token;
    }

    // Limits the evaluation: a name may be defined by itself, or by sums of names that are sums of
    // names.
    static constexpr int mostAtoms = 256;

    std::unordered_map<std::string_view, Tokens> expressions_;
    int atomsLeft_ = 0;
};

std::int64_t componentsOfType(std::string_view name) {
    for (const pbElementTypeRow& row : pbElementTypes)
        if (name == row.name || name == row.glslCarrier)
            return row.scalars;
    return 0;
}

class VaryingCounter {
public:
    explicit VaryingCounter(Tokens tokens) : rest_(tokens) {}

    std::int64_t count() {
        while (!rest_.empty())
            takeNext();
        std::int64_t sum = isRead("outCoord") || isRead("tvek_vertexPosition") ? 4 : 0;
        for (const Varying& varying : varyings_)
            if (isRead(varying.name))
                sum = std::min(sum + varying.components, largestNumber);
        return sum;
    }

private:
    struct Varying {
        std::string_view name;
        std::int64_t components;
    };

    bool isRead(std::string_view name) const { return uses_.contains(name); }

    bool isNext(std::string_view first, std::string_view second) const {
        return rest_.size() > 2 && rest_[0].text == first && rest_[1].text == second;
    }

    void takeNext() {
        if (isNext("#", "define")) {
            takeMacro();
        } else if (isNext("#", "ifdef") && rest_[2].text == "tvek_VERTEX_SHADER") {
            skipGuarded();
        } else if (isNext("const", "int")) {
            forEachDeclarator([this](Tokens declarator) {
                if (declarator.size() > 2)
                    constants_.define(declarator[0].text, declarator.subspan(2));
            });
        } else if (rest_[0].text == "varying" && rest_.size() > 1) {
            const std::int64_t components = componentsOfType(rest_[1].text);
            forEachDeclarator([&](Tokens declarator) { takeVarying(declarator, components); });
        } else {
            uses_.insert(rest_[0].text);
            rest_ = rest_.subspan(1);
        }
    }

    // The expansion of a macro counts as used.
    void takeMacro() {
        std::size_t end = 3;
        for (; end < rest_.size() && rest_[end].isDirective && rest_[end].text != "#"; ++end)
            uses_.insert(rest_[end].text);
        constants_.define(rest_[2].text, rest_.subspan(3, end - 3));
        rest_ = rest_.subspan(end);
    }

    // Skips text that only the vertex shader compiles.
    void skipGuarded() {
        int depth = 0;
        do {
            if (rest_[0].text == "#" && rest_.size() > 1)
                depth += rest_[1].text.starts_with("if") ? 1 : rest_[1].text == "endif" ? -1 : 0;
            rest_ = rest_.subspan(1);
        } while (!rest_.empty() && depth > 0);
    }

    // Skips two tokens and a list up to its ';', and passes each item of the list to `action`.
    template<class Action>
    void forEachDeclarator(Action action) {
        rest_ = rest_.subspan(2);
        for (bool isLast = false; !isLast;) {
            const auto end = std::find_if(rest_.begin(), rest_.end(), [](const Token& token) {
                return token.text == "," || token.text == ";";
            });
            const auto length = static_cast<std::size_t>(end - rest_.begin());
            isLast = end == rest_.end() || end->text == ";";
            action(rest_.first(length));
            rest_ = rest_.subspan(std::min(length + 1, rest_.size()));
        }
    }

    void takeVarying(Tokens declarator, std::int64_t components) {
        if (declarator.empty())
            return;
        Number bound = 1;
        if (declarator.size() > 3 && declarator[1].text == "[" && declarator.back().text == "]")
            bound = constants_.value(declarator.subspan(2, declarator.size() - 3));
        const std::int64_t elements = std::max<std::int64_t>(1, bound.value_or(1));
        varyings_.push_back({declarator[0].text, elements * components});
    }

    Tokens rest_;
    Constants constants_;
    std::vector<Varying> varyings_;
    std::unordered_set<std::string_view> uses_;
};

} // namespace

std::int64_t countVaryingComponents(std::string_view fragmentText) {
    // The prelude's functions are in every program, but few programs call them.
    if (const std::size_t prelude = fragmentText.find(glslPrelude);
        prelude != std::string_view::npos)
        fragmentText.remove_prefix(prelude + glslPrelude.size());
    ShaderReader reader(fragmentText);
    TokenCollector collector;
    reader.parse(collector);
    return VaryingCounter(collector.tokens).count();
}
