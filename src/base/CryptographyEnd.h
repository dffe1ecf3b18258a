#pragma once

namespace quillmate
{

/// Leaves the cryptography library's state to the end of the process, instead of having it freed while the process
/// ends. To be called before anything encrypts; calling it again does nothing; any thread.
///
/// Qt waits for its network threads only until they have no more work, not until they are gone. The library frees what
/// such a thread had when the thread goes, and again, by its exit handler, what the whole process had: both at once is
/// a double free. There is nothing to lose by leaving it, since the memory goes with the process anyway.
void leaveCryptographyToProcessEnd();

} // namespace quillmate
