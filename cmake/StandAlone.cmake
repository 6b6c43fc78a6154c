# quask_stand_alone(TARGET): links an executable with as much of what it needs as the system has static
# libraries for: with everything, else with all but the C library, else with nothing. Loading libraries
# takes longer than scanning a small table: without them the tool starts in the time of a C program. It
# stays position-independent.

include(CheckCXXSourceCompiles)

option(QUASK_LINK_DYNAMICALLY "Link the tool with the system's shared libraries" OFF)

function(quask_check_linking result)
    set(CMAKE_POSITION_INDEPENDENT_CODE)
    set(CMAKE_REQUIRED_FLAGS -fPIE)
    set(CMAKE_REQUIRED_LINK_OPTIONS ${ARGN})
    check_cxx_source_compiles("#include <iostream>\nint main() { std::cout << 1; }" ${result})
endfunction()

if(NOT QUASK_LINK_DYNAMICALLY)
    quask_check_linking(QUASK_HAS_STATIC_PIE -static-pie)
    if(NOT QUASK_HAS_STATIC_PIE)
        quask_check_linking(QUASK_HAS_STATIC_LIBSTDCXX -static-libstdc++ -static-libgcc)
    endif()
endif()

# How the tool is linked.
if(QUASK_LINK_DYNAMICALLY)
    set(QUASK_LINKING dynamic)
elseif(QUASK_HAS_STATIC_PIE)
    set(QUASK_LINKING static)
elseif(QUASK_HAS_STATIC_LIBSTDCXX)
    set(QUASK_LINKING static-libstdc++)
else()
    set(QUASK_LINKING dynamic)
    message(STATUS "There is no static C++ library: the tool is linked dynamically")
endif()

function(quask_stand_alone target)
    if(QUASK_SANITIZE)
        return()  # the sanitizers must come before the C library
    endif()
    target_link_options(${target} PRIVATE -Wl,--gc-sections)
    if(QUASK_LINKING STREQUAL "static")
        # The property would add -pie, which takes -static-pie back.
        set_property(TARGET ${target} PROPERTY POSITION_INDEPENDENT_CODE)
        target_compile_options(${target} PRIVATE -fPIE)
        target_link_options(${target} PRIVATE -static-pie)
    elseif(QUASK_LINKING STREQUAL "static-libstdc++")
        target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
    endif()
endfunction()
