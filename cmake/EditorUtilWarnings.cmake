# Warnings every target of the project is built with; the code stays clean under them.
add_library(EditorUtilWarnings INTERFACE)
target_compile_options(EditorUtilWarnings INTERFACE
  -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
  -Wno-missing-field-initializers)
