# Stand-ins for the platform libraries are object libraries compiled into the shared
# EditorUtil library, so a process has exactly one bus, one model host registry and one
# settings store however many of its modules use them.
#
#   editorutil_platform_library(<Name> [DEPENDS <targets>...])
#
# takes every .cpp and .h of the calling folder; headers are included as <Name/Header.h>.
function(editorutil_platform_library name)
  cmake_parse_arguments(ARG "" "" "DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS
    "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp" "${CMAKE_CURRENT_SOURCE_DIR}/*.h")
  add_library(${name} OBJECT ${sources})
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/platform>)
  target_link_libraries(${name} PUBLIC ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS} EditorUtilWarnings)
  set_property(GLOBAL APPEND PROPERTY EDITORUTIL_PLATFORM_LIBRARIES ${name})
endfunction()
