// Looking again and again.
#ifndef TOOLS_VOATM_SHOW_WATCH_H
#define TOOLS_VOATM_SHOW_WATCH_H

#include <functional>

// Shows a frame every so many seconds, and when a key is pressed, until that is q or a signal
// comes. On a terminal each takes the place of the one before, and the terminal is left as it was.
void Watch(int seconds, const std::function<void()>& show_frame);

#endif  // TOOLS_VOATM_SHOW_WATCH_H
