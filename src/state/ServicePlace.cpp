#include "state/ServicePlace.h"

#include <atomic>

namespace quillmate
{
namespace
{

std::atomic<bool> isOfThisMachine = false;

} // namespace

bool isServiceOfThisMachine()
{
    return isOfThisMachine;
}

void setServiceOfThisMachine(bool ofThisMachine)
{
    isOfThisMachine = ofThisMachine;
}

} // namespace quillmate
