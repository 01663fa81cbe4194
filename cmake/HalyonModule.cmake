# halyon_add_module(NAME SOURCES file... [LINK library...] [EXPORTS file])
#
# A loadable component module, file NAME.so, that links Halyon::Core for itself. It shows its entry points and nothing
# else, or what the version script EXPORTS names; it uses its own symbols, also in a process where something else has
# one of the same name; and everything that it needs is found when it is linked, not when a host loads it.
function(halyon_add_module name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "EXPORTS" "SOURCES;LINK")
  if(arg_UNPARSED_ARGUMENTS OR NOT arg_SOURCES)
    message(FATAL_ERROR "halyon_add_module(${name}): wants SOURCES, and beside them LINK and EXPORTS only")
  endif()
  if(arg_EXPORTS)
    get_filename_component(exports "${arg_EXPORTS}" ABSOLUTE)
  else()
    set(exports "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/HynModule.exports")
  endif()

  add_library(${name} MODULE ${arg_SOURCES})
  set_target_properties(
    ${name} PROPERTIES PREFIX "" LINK_DEPENDS "${exports}" CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  target_link_libraries(${name} PRIVATE ${arg_LINK} Halyon::Core)
  target_link_options(${name} PRIVATE "LINKER:--version-script=${exports}" LINKER:-Bsymbolic LINKER:--as-needed)

  # The sanitizers' symbols come from the program that loads the module.
  get_directory_property(options LINK_OPTIONS)
  if(NOT "${options} ${CMAKE_CXX_FLAGS} ${CMAKE_MODULE_LINKER_FLAGS}" MATCHES "-fsanitize")
    target_link_options(${name} PRIVATE LINKER:--no-undefined)
  endif()
endfunction()
