#include "pbhost/session/dialogs.h"

#include <unistd.h>

#include <filesystem>
#include <iostream>

#include "pbhost/files/printable.h"

namespace pbhost {

namespace {

using hostkit::Question;

bool hasTerminal() {
    return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1;
}

void show(const Question& question) {
    std::string text = question.title;
    text.append(text.empty() || question.message.empty() ? "" : ":\n").append(question.message);
    std::cerr << printable(text) << "\n";
}

std::string readAnswer(const Question& question) {
    const bool isConfirm = question.kind == Question::Kind::Confirm;
    show(question);
    if (isConfirm)
        std::cerr << "  1  yes\n  2  no\nNumber (nothing: no): " << std::flush;
    else
        std::cerr << "Path (nothing: cancel): " << std::flush;
    std::string line;
    std::getline(std::cin, line);
    return isConfirm && line == "1" ? "yes" : line;
}

} // namespace

Dialogs::Dialogs(const std::vector<std::string>& answersAhead)
    : answers_(answersAhead.begin(), answersAhead.end()) {}

std::optional<std::string> Dialogs::answer(const Question& question) {
    if (question.kind == Question::Kind::Alert) {
        if (answers_.empty())
            show(question);
        return std::nullopt;
    }
    std::string answer;
    if (!answers_.empty()) {
        answer = answers_.front();
        answers_.pop_front();
    } else if (hasTerminal()) {
        answer = readAnswer(question);
    }
    if (answer.empty())
        return std::nullopt;
    return question.kind == Question::Kind::Confirm ? answer
                                                    : std::filesystem::absolute(answer).string();
}

void Dialogs::prepare(const std::vector<std::string>& next) {
    answers_.insert(answers_.begin(), next.begin(), next.end());
}

} // namespace pbhost
