# Defines the target "appkit", with which Objective-C++ is compiled and linked: the system's frameworks on a Mac. Elsewhere
# GNUstep stands in for them, for the tests alone; where it is missing there is no such target, and the reason is printed.
if(APPLE)
    enable_language(OBJCXX)
    add_library(appkit INTERFACE)
    target_link_libraries(appkit INTERFACE "-framework AppKit")
    return()
endif()

if(TOLVIX_SANITIZE MATCHES "thread")
    message(STATUS "Without the Objective-C++ layer and its tests: GNUstep's own threads cannot be watched")
    return()
endif()
find_program(CMAKE_OBJCXX_COMPILER NAMES clang++-14 clang++)
find_path(TOLVIX_GNUSTEP_HEADERS AppKit/AppKit.h PATHS /usr/include/GNUstep)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include
    OUTPUT_VARIABLE compiler_headers OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
find_path(TOLVIX_OBJC_HEADERS objc/objc.h PATHS ${compiler_headers})
find_library(TOLVIX_BLOCKS BlocksRuntime)
foreach(needed CMAKE_OBJCXX_COMPILER TOLVIX_GNUSTEP_HEADERS TOLVIX_OBJC_HEADERS TOLVIX_BLOCKS)
    if(NOT ${needed})
        message(STATUS "Without the Objective-C++ layer and its tests: found no ${needed} (clang, GNUstep, block runtime)")
        return()
    endif()
endforeach()

# No link-time flags of the C++ compiler: its driver links, clang only compiles.
set(CMAKE_OBJCXX_COMPILER_LAUNCHER ${CMAKE_CXX_COMPILER_LAUNCHER})
enable_language(OBJCXX)
set(CMAKE_OBJCXX_STANDARD ${CMAKE_CXX_STANDARD})
set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)
set(CMAKE_OBJCXX_EXTENSIONS OFF)
add_library(appkit INTERFACE)
set(options
    -fobjc-runtime=gcc -fblocks -fobjc-exceptions -fconstant-string-class=NSConstantString
    -D_NATIVE_OBJC_EXCEPTIONS -DGNUSTEP -Wno-unknown-warning-option
    "SHELL:-isystem ${PROJECT_SOURCE_DIR}/tests/support/gnustep" "SHELL:-isystem ${TOLVIX_GNUSTEP_HEADERS}"
    "SHELL:-idirafter ${TOLVIX_OBJC_HEADERS}"
    "SHELL:-include ${PROJECT_SOURCE_DIR}/tests/support/gnustep/AppKitNames.h")
if(TOLVIX_SANITIZE MATCHES "undefined")
    # Checks that need help which the other compiler's library does not have.
    list(APPEND options -fno-sanitize=vptr -fno-sanitize=function)
endif()
foreach(option IN LISTS options)
    target_compile_options(appkit INTERFACE "$<$<COMPILE_LANGUAGE:OBJCXX>:${option}>")
endforeach()
# The block runtime comes first: GNUstep has an older one inside that does not copy the blocks of this compiler.
target_link_libraries(appkit INTERFACE "-Wl,--no-as-needed" ${TOLVIX_BLOCKS} -lgnustep-gui -lgnustep-base -lobjc)
