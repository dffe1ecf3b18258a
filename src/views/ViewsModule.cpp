#include "views/ViewsModule.h"

// Written by the build from the types that say QML_ELEMENT.
void qml_register_types_Quillmate_Views();

namespace quillmate
{

void registerViews()
{
    static const bool registered = [] {
        qml_register_types_Quillmate_Views();
        return true;
    }();
    static_cast<void>(registered);
}

} // namespace quillmate
