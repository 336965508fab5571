// The module's messages: the debug output, for a developer, and three report channels, through
// which the engine reports without depending on the host.
#pragma once

// Writes to the debugger; the expanded text is cut at 1023 bytes. Needs no command and uses the
// process heap, so it may be used anywhere.
[[gnu::format(printf, 1, 2)]] void _printf(const char* format, ...);

inline constexpr int ChannelTrace = 0;    // for the developer
inline constexpr int ChannelInfo = 1;     // shown to the user at once, in the host's Info panel
inline constexpr int ChannelErrorLog = 2; // exported by the user after errors

// Receives a zero-terminated text that is valid during the call.
using ReportHandler = void (*)(const char* text);

// Initially a channel has no handler; null removes it. Other channels are ignored.
void setReportHandler(ReportHandler handler, int channel);

// Calls the channel's handler; does nothing without a handler or for another channel.
void reportMessage(const char* text, int channel);
