#include "pbhost/diagnostics/compile_messages.h"

#include <algorithm>
#include <functional>
#include <optional>

#include "pbhost/diagnostics/driver_log.h"
#include "pbhost/diagnostics/kernel_words.h"
#include "pbhost/diagnostics/preprocessed_columns.h"
#include "support/outcome_texts.h"

namespace pbhost {

namespace {

constexpr std::size_t tagLength = std::string_view(vertexTag).size();

// Position of the next entry's stage tag; npos: none.
std::size_t findTag(std::string_view log) {
    std::size_t first = std::string_view::npos;
    for (const std::string_view tag : {vertexTag, fragmentTag, linkTag})
        first = std::min(first, log.find(tag));
    return first;
}

// An entry's text without a last line that the engine has cut.
std::string wholeLines(std::string_view text) {
    constexpr std::size_t longestLog = 1023;
    text = text.substr(0, text.find_last_not_of('\n') + 1);
    const std::size_t lastEnd = text.rfind('\n');
    const bool isCut = text.size() >= longestLog - 1 && lastEnd != std::string_view::npos;
    return std::string(isCut ? text.substr(0, lastEnd) : text);
}

// Finds where in the file the messages about one shader belong.
class ShaderPlaces {
public:
    ShaderPlaces(const MappedProgram& mapped, const ShaderLayout& shaderLayout,
                 std::string_view shaderText)
        : program(mapped), layout(shaderLayout), shader(shaderText), columns_(shaderText) {}

    // The offset in the shader of what a message is about. If the message names something that
    // stands elsewhere in the line, because a macro has moved it or the driver gives no column, it
    // is the occurrence next to the column.
    std::size_t offsetOf(const DriverMessage& message, bool& isExact) const {
        const std::string_view line = joinedLine(shader, message.line);
        std::size_t inLine = message.column == 0
                                 ? std::min(line.find_first_not_of(" \t"), line.size())
                                 : columns_.offsetOfColumn(message.line, line, message.column);
        isExact = message.column != 0;
        const std::string_view name = namedIn(message.text);
        if (!name.empty() && wordAt(line, inLine) != name) {
            if (const auto nearest = nearestWord(line, name, inLine)) {
                inLine = *nearest;
                isExact = true;
            }
        }
        return shader.offsetOfLine(message.line) + inLine;
    }

    // The file's offset for one of the shader. A byte that was not copied, such as a prefix or a
    // keyword that the reader writes, belongs to the next one of its line that was, or to the last
    // one before it.
    std::optional<std::size_t> inFile(std::size_t offset, Region region) const {
        const bool isBody = region == Region::Body;
        const SourceMap& map = isBody ? program.body.toFile : program.expressions.toFile;
        const std::size_t at = offset - (isBody ? layout.body : layout.expressions);
        if (const auto exact = map.sourceOf(at))
            return exact;
        const auto& all = map.stretches();
        const auto next = std::partition_point(all.begin(), all.end(),
                                               [&](const auto& each) { return each.at <= at; });
        const Place place = shader.placeOf(offset);
        if (next != all.end() && shader.placeOf(offset + (next->at - at)).line == place.line)
            return next->source;
        if (next == all.begin())
            return std::nullopt;
        return next[-1].source + next[-1].length - 1;
    }

    const MappedProgram& program;
    const ShaderLayout& layout;
    const SourceText shader;

private:
    static std::optional<std::size_t> nearestWord(std::string_view line, std::string_view word,
                                                  std::size_t wanted) {
        std::optional<std::size_t> nearest;
        const auto distance = [&](std::size_t at) {
            return at < wanted ? wanted - at : at - wanted;
        };
        for (std::size_t at = findWord(line, word); at != std::string_view::npos;
             at = findWord(line, word, at + 1))
            if (!nearest || distance(at) < distance(*nearest))
                nearest = at;
        return nearest;
    }

    PreprocessedColumns columns_;
};

// Writes the findings of one log.
class MessageWriter {
public:
    MessageWriter(DiagnosticList& list, const MappedProgram& program, std::string_view fileText)
        : list_(list), program_(program), words_(fileText),
          isExplained_(std::any_of(list.found.begin(), list.found.end(), isExplanation)) {}

    void add(const DriverMessage& message, const ShaderPlaces& places) {
        if (message.line == 0 || message.line > places.shader.lines())
            return addWithoutPlace(message, "");
        bool isExact = false;
        const std::size_t offset = places.offsetOf(message, isExact);
        const Region region = regionOf(program_, places.layout, offset);
        const bool isFixed = region == Region::Prelude || region == Region::Main;
        if (isFixed && (isExplained_ || message.severity == Severity::Warning))
            return;
        if (isFixed)
            return addWithoutPlace(message, region == Region::Prelude
                                                ? " (in the generated text in front of the kernel)"
                                                : " (in the generated text behind the kernel)");
        const auto inFile = places.inFile(offset, region);
        if (!inFile)
            return addWithoutPlace(message, "");
        addAt(message, *inFile, isExact);
    }

    void addWithoutPlace(const DriverMessage& message, const char* where) {
        Diagnostic& added = list_.add(message.severity, ruleOf(message), program_.kernelAt,
                                      program_.kernelLength, textOf(message) + where);
        finish(added, message);
    }

private:
    void addAt(const DriverMessage& message, std::size_t offset, bool isExact) {
        const std::string_view file = list_.source().text;
        const std::string_view word = wordAt(file, offset);
        const bool isAtWord = word.data() == file.data() + offset;
        Diagnostic& added = list_.add(message.severity, ruleOf(message), offset,
                                      isAtWord ? word.size() : 1, textOf(message));
        if (!isExact)
            added.place.column = added.length = 0;
        finish(added, message);
        if (message.text.find("syntax error") != std::string::npos)
            addSemicolonNote(added, offset);
    }

    // Points out that the statement on an earlier line may not be closed.
    void addSemicolonNote(Diagnostic& added, std::size_t offset) const {
        const std::string_view before = list_.source().text.substr(0, offset);
        const std::size_t last = before.find_last_not_of(" \t\r\n");
        if (last == std::string_view::npos)
            return;
        const std::size_t line = list_.source().placeOf(last).line;
        constexpr std::string_view ends = ";{},(&|+-*/<>=#";
        if (line < added.place.line && ends.find(before[last]) == std::string_view::npos)
            added.notes.push_back("perhaps a ';' is missing at the end of line " +
                                  std::to_string(line));
    }

    void finish(Diagnostic& added, const DriverMessage& message) const {
        if (program_.isNode)
            added.nodes.push_back(program_.name);
        for (const std::string& candidate : message.candidates)
            added.notes.push_back("there is: " + words_.replacedIn(candidate));
    }

    std::string textOf(const DriverMessage& message) const {
        constexpr std::size_t longest = 300; // a file may contain a name of any length
        std::string text = words_.explained(message.text);
        return text.size() <= longest ? text : text.substr(0, longest) + "...";
    }

    static const char* ruleOf(const DriverMessage& message) {
        return message.severity == Severity::Error ? "compile-error" : "compile-warning";
    }

    // An error of the file that is not the driver's.
    static bool isExplanation(const Diagnostic& found) {
        return found.severity == Severity::Error && found.rule != "compile-error";
    }

    DiagnosticList& list_;
    const MappedProgram& program_;
    KernelWords words_;
    const bool isExplained_; // errors in the fixed texts have a known reason
};

void addLinkMessages(MessageWriter& writer, const std::vector<DriverMessage>& messages) {
    for (const DriverMessage& message : messages)
        writer.addWithoutPlace(message, " (when the program is linked)");
}

} // namespace

std::vector<CompileFailure> readErrorLog(std::string_view log) {
    for (std::size_t line = 0; line < errorLogHeading.size(); ++line)
        log.remove_prefix(std::min(log.find('\n'), log.size() - 1) + 1);
    std::vector<CompileFailure> failures;
    for (std::size_t tag = findTag(log); tag != std::string_view::npos; tag = findTag(log)) {
        // The name of the next entry is the text between the empty line and its tag.
        const std::string_view rest = log.substr(tag + tagLength);
        const std::size_t nextTag = findTag(rest);
        const std::size_t end = nextTag == std::string_view::npos
                                    ? rest.size()
                                    : rest.substr(0, nextTag).rfind("\n\n") + 2;
        failures.push_back(
            {std::string(log.substr(0, tag)), log[tag + 1], wholeLines(rest.substr(0, end))});
        log = rest.substr(end);
    }
    return failures;
}

void addDriverMessages(DiagnosticList& list, const MappedProgram& program,
                       const CompileFailure& failure, bool hasWarnings) {
    std::vector<DriverMessage> messages = parseDriverLog(failure.log);
    const auto isError = [](const DriverMessage& each) { return each.severity == Severity::Error; };
    // Beside errors, warnings are about what the errors have left.
    if (!hasWarnings || std::any_of(messages.begin(), messages.end(), isError))
        std::erase_if(messages, std::not_fn(isError));
    MessageWriter writer(list, program, list.source().text);
    if (failure.stage == 'l')
        return addLinkMessages(writer, messages);
    const bool isVertex = failure.stage == 'v';
    const ShaderPlaces places(program, isVertex ? program.layout.vertex : program.layout.fragment,
                              isVertex ? program.vertex : program.fragment);
    for (const DriverMessage& message : messages)
        writer.add(message, places);
}

} // namespace pbhost
