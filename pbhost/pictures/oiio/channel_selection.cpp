#include "pbhost/pictures/oiio/channel_selection.h"

#include <set>
#include <string_view>

namespace pbhost {

namespace {

// Index of the channel, or -1. Damaged files may have fewer names than channels.
int channelNamed(const OIIO::ImageSpec& spec, std::string_view name) {
    const auto& names = spec.channelnames;
    const auto found = std::find(names.begin(), names.end(), name);
    const auto index = int(found - names.begin());
    return found == names.end() || index >= spec.nchannels ? -1 : index;
}

} // namespace

Selection selectChannels(const OIIO::ImageSpec& spec) {
    const int red = channelNamed(spec, "R");
    const int green = channelNamed(spec, "G");
    const int blue = channelNamed(spec, "B");
    const int named = channelNamed(spec, "A");
    const int alpha = named >= 0                            ? named
                      : spec.alpha_channel < spec.nchannels ? spec.alpha_channel
                                                            : -1;
    if (red >= 0 && green >= 0 && blue >= 0)
        return {red, green, blue, alpha};
    const int luminance = channelNamed(spec, "Y");
    if (spec.nchannels <= 2 || luminance >= 0) {
        const int grey = std::max(luminance, 0);
        const int other = spec.nchannels == 2 ? 1 - grey : -1;
        return {grey, grey, grey, alpha >= 0 && alpha != grey ? alpha : other};
    }
    return {0, 1, 2, spec.nchannels > 3 ? 3 : -1};
}

std::optional<Selection> selectLayer(const OIIO::ImageSpec& spec, const std::string& prefix) {
    const auto named = [&](const char* name) {
        return channelNamed(spec, prefix + (prefix.ends_with('.') ? "" : ".") + name);
    };
    const int luminance = named("Y");
    if (named("R") >= 0 && named("G") >= 0 && named("B") >= 0)
        return Selection{named("R"), named("G"), named("B"), named("A")};
    if (luminance >= 0)
        return Selection{luminance, luminance, luminance, named("A")};
    return std::nullopt;
}

std::string otherChannels(const OIIO::ImageSpec& spec, const Selection& selection) {
    std::string names;
    for (int i = 0; i < spec.nchannels && i < int(spec.channelnames.size()); ++i)
        if (!selection.has(i))
            names.append(names.empty() ? "" : " ").append(spec.channelnames[i]);
    return names;
}

std::string layersOf(const OIIO::ImageSpec& spec) {
    std::set<std::string> prefixes;
    for (const std::string& name : spec.channelnames)
        if (const std::size_t dot = name.rfind('.'); dot != std::string::npos)
            if (const std::string prefix = name.substr(0, dot); selectLayer(spec, prefix))
                prefixes.insert(prefix);
    std::string names;
    for (const std::string& prefix : prefixes)
        names.append(names.empty() ? "" : " ").append(prefix);
    return names;
}

} // namespace pbhost
