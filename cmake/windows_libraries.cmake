# The libraries that the Linux build finds as packages, under the same target names, built from the
# sources of Debian's packages. scripts/windows_setup.sh has unpacked these into TVM_LIBRARY_SOURCES;
# headers without a library and the test framework come from the machine's own packages.
set(TVM_LIBRARY_SOURCES "${CMAKE_SOURCE_DIR}/build/windows-libraries" CACHE PATH
  "Where the sources of glew, tinyxml and duktape are unpacked")

function(require_source file)
  if(NOT EXISTS "${file}")
    message(FATAL_ERROR "${file} is missing: ./test windows installs and unpacks what is needed")
  endif()
endfunction()

# add_source_library(NAME FOLDER ALIAS SOURCES... INCLUDES...): builds it without warnings.
function(add_source_library name alias folder)
  cmake_parse_arguments(LIB "" "INCLUDE" "SOURCES;DEFINES" ${ARGN})
  list(TRANSFORM LIB_SOURCES PREPEND "${folder}/")
  foreach(source ${LIB_SOURCES})
    require_source(${source})
  endforeach()
  add_library(${name} STATIC ${LIB_SOURCES})
  target_compile_options(${name} PRIVATE -w)
  target_compile_definitions(${name} PUBLIC ${LIB_DEFINES})
  target_include_directories(${name} SYSTEM PUBLIC "${folder}/${LIB_INCLUDE}")
  add_library(${alias} ALIAS ${name})
endfunction()

add_library(opengl INTERFACE)
target_link_libraries(opengl INTERFACE opengl32)
add_library(OpenGL::OpenGL ALIAS opengl)
add_library(glu INTERFACE)
target_link_libraries(glu INTERFACE glu32 opengl32)
add_library(OpenGL::GLU ALIAS glu)

add_source_library(glew GLEW::GLEW ${TVM_LIBRARY_SOURCES}/glew
  SOURCES src/glew.c INCLUDE include DEFINES GLEW_STATIC)
target_link_libraries(glew PUBLIC opengl)
add_source_library(tinyxml PkgConfig::TINYXML ${TVM_LIBRARY_SOURCES}/tinyxml
  SOURCES tinystr.cpp tinyxml.cpp tinyxmlerror.cpp tinyxmlparser.cpp INCLUDE .
  DEFINES TIXML_USE_STL)
add_source_library(duktape PkgConfig::DUKTAPE ${TVM_LIBRARY_SOURCES}/duktape
  SOURCES src/duktape.c INCLUDE src)

# Only this folder, because the rest of /usr/include belongs to this machine's C library.
require_source(/usr/include/nlohmann/json.hpp)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/headers)
file(CREATE_LINK /usr/include/nlohmann ${CMAKE_BINARY_DIR}/headers/nlohmann SYMBOLIC)
add_library(nlohmann_json INTERFACE)
target_include_directories(nlohmann_json SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/headers)
add_library(nlohmann_json::nlohmann_json ALIAS nlohmann_json)

if(TVM_TESTS)
  require_source(/usr/src/googletest/CMakeLists.txt)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  if(NOT TARGET GTest::gmock)
    add_library(GTest::gmock ALIAS gmock)
    add_library(GTest::gtest ALIAS gtest)
    add_library(GTest::gtest_main ALIAS gtest_main)
  endif()
endif()
