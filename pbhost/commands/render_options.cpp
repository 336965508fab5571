#include "pbhost/commands/render_options.h"

#include <map>

namespace pbhost {

namespace {

CLI::Validator notEmpty() {
    return {[](std::string& text) { return std::string(text.empty() ? "it is empty" : ""); }, ""};
}

void addFiles(CLI::App& command, RenderRequest& request) {
    command.add_option("file", request.files,
                       "The kernels (.pbk) and graphs (.pbg), applied one after the other");
    command
        .add_option("-i,--input", request.inputs,
                    "An input picture: the first for the layer, the others for the layer controls; "
                    "- for standard input; shot.####.png or shot.%04d.png for a sequence")
        ->allow_extra_args(false)
        ->check(notEmpty());
    command
        .add_option("-o,--output", request.output,
                    "The picture to write; - for standard output, with --format")
        ->required()
        ->check(notEmpty());
    command
        .add_option("--layer", request.layers,
                    "A layer control's picture: N=PICTURE, by the control's number or name")
        ->allow_extra_args(false);
    command.add_option("--size", request.size,
                       "Size of the layer if it has no picture, WIDTHxHEIGHT (default: 640x360)");
    command
        .add_option("--project", request.project, "Open this project instead of a kernel or graph")
        ->check(notEmpty());
    command.add_option("--save", request.save, "Write a project")->check(notEmpty());
}

void addControls(CLI::App& command, RenderRequest& request) {
    command
        .add_option("--set", request.settings,
                    "A control's value: CONTROL=V, or CONTROL=V,V,V for a point, a color (red, "
                    "green, blue and alpha, 0 to 1) or all of CONTROL[0], CONTROL[1] ...; a popup "
                    "by its number, counted from 1, or its text; an angle in degrees; a checkbox "
                    "by true or false; 2:CONTROL or NAME.CONTROL for one of several effects, by "
                    "its number or its file's name")
        ->allow_extra_args(false);
    command
        .add_option("--key", request.keys,
                    "A keyframe: CONTROL@FRAME=V, or CONTROL@FRAME=hold:V to keep the value until "
                    "the next one")
        ->allow_extra_args(false);
    command
        .add_option_function<int>(
            "--depth", [&request](int bits) { request.depth = depthOfBits(bits); },
            "Bits per channel: 8, 16 or 32 (default: the picture's)")
        ->check(CLI::IsMember({8, 16, 32}));
    command
        .add_option("--downsample", request.downsample,
                    "Divide the resolution by X or by X,Y: 2 for half")
        ->capture_default_str();
    command.add_option("--time", request.time, "The time to render, in seconds (default: 0)")
        ->check(notEmpty());
}

void addPictures(CLI::App& command, PictureRequest& request) {
    const std::map<std::string, ValueType> types = {{"uint8", ValueType::UInt8},
                                                    {"uint16", ValueType::UInt16},
                                                    {"half", ValueType::Half},
                                                    {"float", ValueType::Float}};
    command
        .add_option("--alpha", request.alpha,
                    "How the effects get colours: straight, premultiplied by alpha, or as-is, "
                    "without any conversion (default: as in the first picture's file)")
        ->check(CLI::IsMember({"straight", "premultiplied", "as-is"}));
    command
        .add_option("--type", request.type,
                    "Type of the written values: uint8, uint16, half or float (default: the first "
                    "picture's, or by --depth)")
        ->transform(CLI::CheckedTransformer(types).description("uint8, uint16, half or float"));
    command.add_option("--compression", request.compression,
                       "Compression of the written file, by the format's name for it");
    command.add_option("--quality", request.quality,
                       "Quality of the written file, for JPEG, WebP, DWA compression or a video");
    command.add_option("--channels", request.channels,
                       "Read the channels NAME.R, NAME.G ... of a file with several layers");
    auto* const workSpace =
        command.add_option("--work-space", request.colours.workSpace,
                           "Convert the pictures to this colour space, and the result back");
    command
        .add_option("--ocio", request.colours.configuration,
                    "The OpenColorIO configuration with the colour spaces (default: $OCIO)")
        ->needs(workSpace)
        ->check(CLI::ExistingFile);
    command.add_option("--format", request.format,
                       "Format of standard output, by its file extension: png");
    command.add_flag("--no-clobber", request.isNoClobber, "Fail if an output file exists");
}

void addSequence(CLI::App& command, SequenceRequest& request) {
    command.add_option("--frames", request.frames,
                       "The frames to render, as 1-100, 1-100x2, 120-110 or 1,5,9 (default: those "
                       "on disk)");
    command.add_option("--fps", request.fps,
                       "Frames per second, as 24 or 30000/1001 (default: the file's own, or 24)");
    command.add_option("--first", request.first,
                       "The frame at second 0 (default: the first of the frames)");
    command
        .add_option("--missing", request.missing,
                    "What to do for a missing picture: error, skip, black, or hold the one before")
        ->check(CLI::IsMember({"error", "skip", "black", "hold"}))
        ->capture_default_str();
    command.add_flag("--keep-going", request.isKeepingGoing,
                     "Render the other frames if one fails, and exit with 1 at the end");
    command.add_flag("--resume", request.isResumed,
                     "Skip frames that are complete and would come out the same");
    command.add_flag("--dry-run", request.isDryRun, "Only list what would be rendered");
    command
        .add_option("--codec", request.codec,
                    "Codec of a video: h264 or prores (default: prores for .mov, otherwise h264)")
        ->check(CLI::IsMember({"h264", "prores"}));
    command.add_option("--memory", request.memory,
                       "Memory for the pictures of frames, as 2G (default: a quarter of all)");
    command
        .add_option("--progress", request.progress,
                    "Report frames on standard error: auto, json for programs, none")
        ->check(CLI::IsMember({"auto", "json", "none"}))
        ->capture_default_str();
}

} // namespace

void addRenderOptions(CLI::App& command, RenderRequest& request) {
    addFiles(command, request);
    addControls(command, request);
    addPictures(command, request.pictures);
    addSequence(command, request.sequence);
    command.add_flag("--strict", request.findings.isStrict,
                     "Treat warnings about the kernel or graph as errors");
    command.add_flag_callback(
        "-q,--quiet",
        [&request] {
            request.sequence.progress = "none";
            request.findings.isQuiet = true;
        },
        "Do not show warnings, and no progress");
}

} // namespace pbhost
