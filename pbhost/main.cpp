// pbhost: applies Pixel Bender kernels and graphs to pictures, and shows what becomes of them.

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdio>
#include <iostream>
#include <new>

#include "pbhost/command.h"
#include "pbhost/failure.h"
#include "pbhost/large_blocks.h"
#include "pbhost/model_verb.h"
#include "pbhost/printable.h"
#include "pbhost/render_verb.h"
#include "pbhost/translate_verb.h"

namespace {

using pbhost::ExitCode;
using pbhost::Failure;

void writeOut(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw Failure(ExitCode::RenderFailed, "standard output could not be written");
}

std::pair<unsigned, unsigned> parseSize(const std::string& text) {
    unsigned width = 0;
    unsigned height = 0;
    const char* const end = text.data() + text.size();
    const auto [middle, widthError] = std::from_chars(text.data(), end, width);
    const bool hasWidth = widthError == std::errc() && middle != end && *middle == 'x';
    const auto [last, heightError] = std::from_chars(hasWidth ? middle + 1 : end, end, height);
    if (heightError != std::errc() || last != end || width == 0 || height == 0)
        throw Failure(ExitCode::Usage, "--size " + text + ": write WIDTHxHEIGHT, in pixels");
    return {width, height};
}

void addRender(CLI::App& app) {
    auto* verb = app.add_subcommand("render", "Apply a kernel or graph to pictures");
    auto request = std::make_shared<pbhost::RenderRequest>();
    auto depth = std::make_shared<int>(0);
    auto size = std::make_shared<std::string>();
    verb->add_option("file", request->file, "The kernel (.pbk) or graph (.pbg)")->required();
    verb->add_option("-i,--input", request->inputs,
                     "An input picture; once for each input of the kernel, in order");
    verb->add_option("-o,--output", request->output, "The picture to write")->required();
    verb->add_option("--set", request->settings, "A parameter's value: NAME=V or NAME=V,V,V")
        ->allow_extra_args(false);
    verb->add_option("--depth", *depth, "Bits per channel: 8, 16 or 32 (default: the picture's)")
        ->check(CLI::IsMember({8, 16, 32}));
    verb->add_option("--size", *size,
                     "Size of the result, WIDTHxHEIGHT (default: the first picture's, or 640x360)");
    verb->get_option("--input")->allow_extra_args(false);
    verb->callback([request, depth, size] {
        if (*depth != 0)
            request->depth = *depth == 8    ? pbhost::Depth::Bits8
                             : *depth == 16 ? pbhost::Depth::Bits16
                                            : pbhost::Depth::Bits32;
        if (!size->empty())
            request->size = parseSize(*size);
        pbhost::render(*request);
    });
}

void addTranslate(CLI::App& app) {
    auto* verb = app.add_subcommand("translate", "Show the GLSL programs made of a kernel or node");
    auto request = std::make_shared<pbhost::TranslateRequest>();
    request->order = 18;
    verb->add_option("file", request->file, "The kernel (.pbk) or graph (.pbg)")->required();
    verb->add_option("--node", request->node, "The id of a graph's node");
    verb->add_option("--stage", request->stage, "Write exactly this text: vertex or fragment")
        ->check(CLI::IsMember({"vertex", "fragment"}));
    verb->add_option("--order", request->order,
                     "Index of the channel order of the textures, 0 to 23; 18 is alpha, "
                     "red, green, blue")
        ->capture_default_str()
        ->check(CLI::Range(0, 23));
    verb->callback([request] {
        const pbhost::Command command;
        writeOut(pbhost::translate(*request));
    });
}

void addModel(CLI::App& app) {
    auto* verb = app.add_subcommand("model", "Write what is read out of a file, as JSON");
    auto file = std::make_shared<std::string>();
    verb->add_option("file", *file, "The kernel (.pbk) or graph (.pbg)")->required();
    verb->callback([file] {
        const pbhost::Command command;
        writeOut(pbhost::modelAsJson(*file));
    });
}

int complain(ExitCode code, const std::string& message) {
    std::cerr << "pbhost: " << pbhost::printable(message) << (message.ends_with('\n') ? "" : "\n");
    return static_cast<int>(code);
}

int run(int argc, char** argv) {
    CLI::App app("Applies Pixel Bender kernels and graphs to pictures.", "pbhost");
    app.require_subcommand(0, 1); // with none, the parser would name no mistyped verb
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return std::string("pbhost: ") + error.what() +
               "\nTo see what is understood: pbhost --help, " + "pbhost VERB --help\n";
    });
    app.footer("Example: pbhost render blur.pbk -i photo.png -o blurred.png --set radius=6\n"
               "Exit codes: 0 done, 1 render or write failed, 2 usage, 3 kernel or graph, 4 input "
               "picture.");
    addRender(app);
    addTranslate(app);
    addModel(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int code = app.exit(error);
        return code == 0 ? 0 : static_cast<int>(ExitCode::Usage);
    }
    if (!app.get_subcommands().empty())
        return 0;
    std::cerr << app.help();
    return static_cast<int>(ExitCode::Usage);
}

} // namespace

int main(int argc, char** argv) {
    pbhost::keepLargeBlocks();
    try {
        return run(argc, argv);
    } catch (const Failure& failure) {
        return complain(failure.code, failure.what());
    } catch (const std::bad_alloc&) {
        return complain(ExitCode::RenderFailed, "out of memory");
    } catch (long) {
        return complain(ExitCode::RenderFailed, "out of memory");
    } catch (const std::exception& error) {
        return complain(ExitCode::RenderFailed, error.what());
    }
}
