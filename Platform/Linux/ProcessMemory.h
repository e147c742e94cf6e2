#pragma once

namespace tokwatch {

/// Gives memory back to the system: what was freed, and the code and constants of all that is
/// loaded, which come back from the page cache as far as they are needed again (about a
/// microsecond for each 64 KB). For the moments after something large that will not come again
/// soon: the start, a window's end. Any thread.
void giveBackMemory();

} // namespace tokwatch
