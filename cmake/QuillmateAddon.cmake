# What the mail application knows this program by: the identifier of its add-on, and the name of the native host that the
# add-on starts.

set(QUILLMATE_ADDON_ID "quillmate@quillmate.example")
set(QUILLMATE_NATIVE_HOST "quillmate")
