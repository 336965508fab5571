// The module's messages: the debug output, for a developer, and three report channels, through
// which the engine reports without depending on the host.
#pragma once

// Writes to the debugger; the expanded text is cut at 1023 bytes. Needs no command and uses the
// process heap, so it may be used anywhere.
[[gnu::format(printf, 1, 2)]] void _printf(const char* format, ...);

inline constexpr int ChannelTrace = 0;    // what a developer may want to see
inline constexpr int ChannelInfo = 1;     // what the user sees at once, in the host's Info panel
inline constexpr int ChannelErrorLog = 2; // what the user may export when something went wrong

// Receives a zero-terminated text that is valid during the call.
using ReportHandler = void (*)(const char* text);

// The slot of a channel is empty at the start; null empties it again. Another channel is ignored.
void setReportHandler(ReportHandler handler, int channel);

// Calls the channel's handler; with an empty slot, or another channel, nothing happens.
void reportMessage(const char* text, int channel);
