# The module's resource: a file beside it and, on Windows, a resource of type PIPL inside it. A
# program that runs on the build machine writes the file.
set(pipl ${CMAKE_BINARY_DIR}/Tvelmarondine.pipl)
set(write_pipl_source ${CMAKE_SOURCE_DIR}/src/pipl/write_pipl.cpp)
if(CMAKE_CROSSCOMPILING)
  find_program(TVM_BUILD_CXX NAMES c++ g++ clang++ REQUIRED DOC "The build machine's own compiler")
  set(write_pipl ${CMAKE_BINARY_DIR}/write_pipl)
  add_custom_command(OUTPUT ${write_pipl}
    COMMAND ${TVM_BUILD_CXX} -std=c++20 -I${CMAKE_SOURCE_DIR}/src ${write_pipl_source} -o ${write_pipl}
    DEPENDS ${write_pipl_source} ${CMAKE_SOURCE_DIR}/src/shell/plugin_facts.h)
else()
  add_executable(write_pipl ${write_pipl_source})
  target_include_directories(write_pipl PRIVATE ${CMAKE_SOURCE_DIR}/src)
  set(write_pipl write_pipl)
endif()
add_custom_command(OUTPUT ${pipl} COMMAND ${write_pipl} ${pipl} DEPENDS ${write_pipl})
add_custom_target(pipl ALL DEPENDS ${pipl})
add_dependencies(Tvelmarondine pipl)

if(WIN32)
  enable_language(RC)
  file(WRITE ${CMAKE_BINARY_DIR}/pipl.rc "16000 PIPL \"Tvelmarondine.pipl\"\n")
  set_property(SOURCE ${CMAKE_BINARY_DIR}/pipl.rc PROPERTY OBJECT_DEPENDS ${pipl})
  set_property(SOURCE ${CMAKE_BINARY_DIR}/pipl.rc PROPERTY INCLUDE_DIRECTORIES ${CMAKE_BINARY_DIR})
  target_sources(Tvelmarondine PRIVATE ${CMAKE_BINARY_DIR}/pipl.rc)
endif()
