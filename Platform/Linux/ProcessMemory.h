#pragma once

namespace tokwatch {

/// Gives memory back to the system: what was freed, and the code and constants of all that is
/// loaded, which come back from the page cache as far as they are needed again (about a
/// microsecond for each 64 KB). For the moments after something large that will not come again
/// soon: the start, a window's end. Any thread.
void giveBackMemory();

/// Has the allocator keep little of what was freed: for programs that live for days and use much
/// for moments. Large pieces go back to the system one by one, and threads share two heaps in place
/// of one each, whose rests would add up. Costs page faults where large pieces come and go. Before
/// there are threads.
void keepMemorySmall();

} // namespace tokwatch
