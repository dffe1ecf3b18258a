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

/// Owns one reference of a MIME library object.
template<typename Object>
using ObjectPointer = std::unique_ptr<Object, ObjectRelease>;

} // namespace quillmate
