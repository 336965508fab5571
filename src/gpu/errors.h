// OpenGL's errors in a stretch of work, such as a frame. All of it needs a current context.
#pragma once

// The first error since the last call; 0: there was none. The list is empty behind it.
unsigned int takeError();

// In words; never null.
const char* errorText(unsigned int error);

// Stands behind an OpenGL step. In builds with assertions an error is told at once with the step's
// name, on the developer's channel, and kept for takeError; in others there is nothing.
#ifdef NDEBUG
#define TVM_CHECK_GL(step) static_cast<void>(0)
#else
#define TVM_CHECK_GL(step) checkStep(step)
void checkStep(const char* step);
#endif
