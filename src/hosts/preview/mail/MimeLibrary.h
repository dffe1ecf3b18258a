#pragma once

#include <gmime/gmime.h>

#include <memory>

namespace quillmate
{

/// Gets the MIME library ready; every function that uses it calls this first. Any thread, any number of times.
void prepareMimeLibrary();

struct ObjectRelease {
    void operator()(void* object) const { g_object_unref(object); }
};
struct MemoryRelease {
    void operator()(void* memory) const { g_free(memory); }
};

/// Owns one reference of a MIME library object.
template<typename Object>
using ObjectPointer = std::unique_ptr<Object, ObjectRelease>;
/// Owns memory that the MIME library allocated.
template<typename Value>
using MemoryPointer = std::unique_ptr<Value, MemoryRelease>;

} // namespace quillmate
