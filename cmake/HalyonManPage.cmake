# halyon_man_page(FILE COMPONENT part) installs a manual page of section 1, compressed as the distribution wants it.
find_program(HALYON_GZIP gzip REQUIRED)
function(halyon_man_page page)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "COMPONENT" "")
  set(packed ${CMAKE_CURRENT_BINARY_DIR}/${page}.gz)
  add_custom_command(
    OUTPUT ${packed}
    COMMAND ${HALYON_GZIP} -9nc ${CMAKE_CURRENT_SOURCE_DIR}/${page} > ${packed}
    DEPENDS ${page}
    VERBATIM)
  add_custom_target(man-${page} ALL DEPENDS ${packed})
  install(FILES ${packed} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${arg_COMPONENT})
endfunction()
