#pragma once

namespace quillmate::localservice
{

/// Leaves the cryptography library's state to the end of the process instead of freeing it on the way out: a network
/// thread of Qt's that is just ending may still be freeing its own part of it. To be called before anything encrypts.
void leaveCryptographyToProcessEnd();

} // namespace quillmate::localservice
