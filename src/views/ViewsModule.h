#pragma once

namespace quillmate
{

/// Makes the views known to the engine; nothing on later calls. Needed because the module is built into the program: an
/// engine that opens one of its files by address does not look for the types that stand beside it in C++. Main thread.
void registerViews();

} // namespace quillmate
