# What the targets of this project have in common.

set(kfl_warnings
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wcast-align -Wcast-qual
    -Wformat=2 -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Wundef -Wunused
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-branches$<SEMICOLON>-Wduplicated-cond$<SEMICOLON>-Wlogical-op>
    $<$<CXX_COMPILER_ID:Clang>:-Wweak-vtables$<SEMICOLON>-Wimplicit-fallthrough>)

# Language, warnings and the instrumentation that was asked for.
function(kfl_target_defaults target)
  set_target_properties(${target} PROPERTIES CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON
                                             CXX_EXTENSIONS ${KFL_COVERAGE})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})
  target_compile_options(${target} PRIVATE ${kfl_warnings} $<$<BOOL:${KFL_WERROR}>:-Werror>)
  if(KFL_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${KFL_SANITIZE} -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC -fsanitize=${KFL_SANITIZE})
  endif()
  if(KFL_FUZZ)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  if(KFL_COVERAGE)
    target_compile_definitions(${target} PRIVATE KFL_COVERAGE)
    target_link_options(${target} PUBLIC --coverage)
  endif()
endfunction()

# How the library itself is compiled: position independent, nothing exported but what is marked, no
# dependence on what a small C++ runtime may lack.
function(kfl_library_flags target)
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON
                                             CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE -fno-sized-deallocation -fno-threadsafe-statics
                                           -fno-semantic-interposition
                                           -ffunction-sections -fdata-sections)
  # The binary interface is read from the debugging information, also where a preset asks for little of it.
  target_compile_options(${target} PRIVATE $<$<CONFIG:Debug,RelWithDebInfo>:-g>)
  # Room between functions and in front of branches' targets is a tenth of the code, and gains nothing;
  # loops keep theirs.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -fno-align-functions -fno-align-jumps -fno-align-labels)
  endif()
  # Small code for small code's sake: a little slower to enter and to leave.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_BUILD_TYPE STREQUAL "MinSizeRel")
    target_compile_options(${target} PRIVATE -fno-shrink-wrap -fno-jump-tables -fno-tree-loop-im)
  endif()
  # What runs is counted in the library alone: it is what is asked for.
  if(KFL_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
  endif()
  # Objects for both kinds of link: the white-box tests are linked as usual.
  if(KFL_LINK_TIME)
    target_compile_options(${target} PRIVATE -flto -ffat-lto-objects)
  endif()
  # -D_GNU_SOURCE is g++'s default and is said for compilers that leave it out in strict mode.
  target_compile_definitions(${target} PRIVATE _GNU_SOURCE _FILE_OFFSET_BITS=64)
endfunction()

# A static library with the names that a host supplies. Programs may not use them themselves, and the shared
# library that does may stand behind it on the link line, where the linker no longer looks back: the name
# of one of them makes the linker take them all.
function(kfl_target_always_linked target)
  target_link_options(${target} INTERFACE LINKER:--undefined=_Z5ParmsPKcz)
endfunction()
