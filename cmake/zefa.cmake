# What all targets of the project share.

add_library(zefa_options INTERFACE)
target_include_directories(zefa_options INTERFACE ${CMAKE_SOURCE_DIR})
# Contraction would give other pixels on processors with fused multiply-add.
target_compile_options(zefa_options INTERFACE
  -Wall -Wextra -Wconversion -Wshadow -Werror -ffp-contract=off)
target_link_options(zefa_options INTERFACE -Wl,-O1 -Wl,--as-needed)
if(ZEFA_SANITIZE)
  target_compile_options(zefa_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer
    # With its checks built in, the compiler takes sizes for negative that it has just been told are not.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow>)
  target_link_options(zefa_options INTERFACE -fsanitize=address,undefined)
endif()

# A format module: all sources of the calling folder, hidden but for the entries, loaded by the program and never unloaded
# (the second film of a run then costs nothing).
function(zefa_module name)
  cmake_parse_arguments(arg "" "" "LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  add_library(${name} MODULE ${sources})
  target_link_libraries(${name} PRIVATE zefa_options libzefa modules_common ${arg_LIBRARIES})
  set_target_properties(${name} PROPERTIES
    PREFIX "" CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/modules
    BUILD_RPATH "$ORIGIN/.." BUILD_RPATH_USE_ORIGIN ON INSTALL_RPATH "$ORIGIN")
  if(NOT ZEFA_SANITIZE)
    target_link_options(${name} PRIVATE -Wl,-z,nodelete)
  endif()
  install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR_ZEFA})
endfunction()

# A shared object for one heavy library, which modules open at the first real load.
function(zefa_helper name)
  cmake_parse_arguments(arg "" "" "LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  add_library(${name} MODULE ${sources})
  target_link_libraries(${name} PRIVATE zefa_options libzefa modules_common ${arg_LIBRARIES})
  set_target_properties(${name} PROPERTIES
    PREFIX "" CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/modules/helpers
    BUILD_RPATH "$ORIGIN/../.." BUILD_RPATH_USE_ORIGIN ON INSTALL_RPATH "$ORIGIN/..")
  if(NOT ZEFA_SANITIZE)
    target_link_options(${name} PRIVATE -Wl,-z,nodelete)
  endif()
  install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR_ZEFA}/helpers)
endfunction()

# The program looks for its modules here, beside its own folder; a system's multiarch folder plays no part.
set(CMAKE_INSTALL_LIBDIR_ZEFA lib/zefa)
