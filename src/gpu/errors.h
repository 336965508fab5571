// Collects OpenGL's errors, for example those of a frame. Everything needs a current context.
#pragma once

// The first error since the last call; 0: there was none. Empties OpenGL's list.
unsigned int takeError();

// The error as text; never null.
const char* errorText(unsigned int error);

// Checks for an error after an OpenGL step. In builds with assertions an error is reported with the
// step's name on the developer's channel, and kept for takeError; other builds check nothing.
#ifdef NDEBUG
#define TVM_CHECK_GL(step) static_cast<void>(0)
#else
#define TVM_CHECK_GL(step) checkStep(step)
void checkStep(const char* step);
#endif
