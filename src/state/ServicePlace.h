#pragma once

namespace quillmate
{

/// Whether the service that is asked is one of this machine, which serves this user alone: it may be asked more often
/// than one that many share. False until it is said. Any thread.
[[nodiscard]] bool isServiceOfThisMachine();
void setServiceOfThisMachine(bool ofThisMachine);

} // namespace quillmate
