# inkory_module(NAME [PUBLIC libraries...] [PRIVATE libraries...])
# Declares one room of source/ as a static library made of all sources in its folder.
function(inkory_module name)
  cmake_parse_arguments(ARG "" "" "PUBLIC;PRIVATE" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp" "${CMAKE_CURRENT_SOURCE_DIR}/*.h")
  add_library(${name} STATIC ${sources})
  target_link_libraries(${name} PUBLIC inkory_settings ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
endfunction()
