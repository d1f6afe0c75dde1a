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
    "$<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow;-Wno-array-bounds>")
  target_link_options(zefa_options INTERFACE -fsanitize=address,undefined)
endif()

# All sources of the calling folder as an object that the program opens while it runs.
function(zefa_loaded_object name folder)
  cmake_parse_arguments(arg "" "" "LIBRARIES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  add_library(${name} MODULE ${sources})
  target_link_libraries(${name} PRIVATE zefa_options libzefa modules_common ${arg_LIBRARIES})
  zefa_place_loaded_object(${name} "${folder}")
endfunction()

# Each mapping and each folder that the loader searches costs at every start: few segments, and no search path (libzefa is
# there already, the rest is the system's).
function(zefa_place_loaded_object name folder)
  set_target_properties(${name} PROPERTIES
    PREFIX "" CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    SKIP_BUILD_RPATH ON INSTALL_RPATH ""
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/modules/${folder})
  target_link_options(${name} PRIVATE -Wl,-z,noseparate-code -Wl,-z,norelro)
  if(NOT ZEFA_SANITIZE)
    target_link_options(${name} PRIVATE -Wl,-z,nodelete)
  endif()
  install(TARGETS ${name} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR_ZEFA}/${folder})
endfunction()

# A format module: all sources of the calling folder, hidden but for the entries, loaded by the program and never unloaded
# (the second film of a run then costs nothing). The program opens all modules at every start; so the name that it opens
# is a small front, and the module proper lies among the helpers until a file needs it. THUMBNAIL: it has the entry
# LoadImageThumbnail. EVERY_RUN: it is needed at any rate and does without a front.
function(zefa_module name)
  cmake_parse_arguments(arg "THUMBNAIL;EVERY_RUN" "" "LIBRARIES" ${ARGN})
  if(arg_EVERY_RUN)
    zefa_loaded_object(${name} "" LIBRARIES ${arg_LIBRARIES})
    return()
  endif()
  zefa_loaded_object(${name} helpers LIBRARIES ${arg_LIBRARIES})
  add_library(${name}_front MODULE ${CMAKE_SOURCE_DIR}/modules/front/front.cpp)
  target_compile_definitions(${name}_front PRIVATE ZEFA_MODULE_NAME="${name}" $<$<BOOL:${arg_THUMBNAIL}>:ZEFA_MODULE_THUMBNAIL>)
  target_link_libraries(${name}_front PRIVATE zefa_options libzefa)
  set_target_properties(${name}_front PROPERTIES OUTPUT_NAME ${name})
  zefa_place_loaded_object(${name}_front "")
  if(NOT ZEFA_SANITIZE)
    target_link_options(${name}_front PRIVATE -nostartfiles)  # it has nothing to construct
  endif()
  add_dependencies(${name} ${name}_front)
endfunction()

# A shared object for one heavy library, which modules open at the first real load.
function(zefa_helper name)
  cmake_parse_arguments(arg "" "" "LIBRARIES" ${ARGN})
  zefa_loaded_object(${name} helpers LIBRARIES ${arg_LIBRARIES})
endfunction()

# The program looks for its modules here, beside its own folder; a system's multiarch folder plays no part.
set(CMAKE_INSTALL_LIBDIR_ZEFA lib/zefa)
