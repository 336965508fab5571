# The layout of `cmake --install` and of the Debian package by `cpack -G DEB`:
#
#   bin/pbhost                      finds the module in ../lib/tvelmarondine
#   lib/tvelmarondine/              the module, its resource, the picture formats
#   share/man, bash-completion      written from the program's own help
#   share/doc/tvelmarondine         README, examples, documents

function(add_command_line_file kind file)
  add_custom_command(OUTPUT ${file}
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/describe_command_line.py ${kind} $<TARGET_FILE:pbhost> > ${file}
    DEPENDS pbhost ${CMAKE_SOURCE_DIR}/scripts/describe_command_line.py)
endfunction()

add_command_line_file(man ${CMAKE_BINARY_DIR}/pbhost.1)
add_command_line_file(bash ${CMAKE_BINARY_DIR}/pbhost.bash)
add_custom_target(command_line_files ALL DEPENDS ${CMAKE_BINARY_DIR}/pbhost.1 ${CMAKE_BINARY_DIR}/pbhost.bash)

install(TARGETS pbhost RUNTIME DESTINATION bin)
install(TARGETS Tvelmarondine pbhost_pictures LIBRARY DESTINATION lib/tvelmarondine)
install(FILES ${CMAKE_BINARY_DIR}/Tvelmarondine.pipl DESTINATION lib/tvelmarondine)
install(FILES ${CMAKE_BINARY_DIR}/pbhost.1 DESTINATION share/man/man1)
install(FILES ${CMAKE_BINARY_DIR}/pbhost.bash DESTINATION share/bash-completion/completions RENAME pbhost)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION share/doc/tvelmarondine)
install(DIRECTORY docs examples DESTINATION share/doc/tvelmarondine PATTERN *.py EXCLUDE)

set(CPACK_PACKAGE_NAME tvelmarondine)
set(CPACK_PACKAGE_VENDOR HOLMVARDEN)
set(CPACK_PACKAGE_CONTACT "HOLMVARDEN")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Runs Pixel Bender kernels and graphs on the graphics processor")
set(CPACK_PACKAGE_FILE_NAME tvelmarondine_${PROJECT_VERSION}_${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The OpenGL drivers are loaded at run time, so the linker does not list them.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libegl-mesa0, libgl1-mesa-dri")
include(CPack)
