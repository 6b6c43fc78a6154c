# quask_stand_alone(TARGET): links an executable with everything that it needs, where the system has
# the C library for that; else with all but the C library. To load libraries takes longer than to scan
# a small table: like this, the tool starts in the time of a C program. It stays position-independent.

include(CheckCXXSourceCompiles)

block()
    set(CMAKE_POSITION_INDEPENDENT_CODE)
    set(CMAKE_REQUIRED_FLAGS -fPIE)
    set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie)
    check_cxx_source_compiles("#include <iostream>\nint main() { std::cout << 1; }" QUASK_HAS_STATIC_PIE)
endblock()

function(quask_stand_alone target)
    if(QUASK_SANITIZE)
        return()  # the sanitizers have their place in front of the C library
    endif()
    target_link_options(${target} PRIVATE -Wl,--gc-sections)
    if(QUASK_HAS_STATIC_PIE)
        # The property would add -pie, which takes -static-pie back.
        set_property(TARGET ${target} PROPERTY POSITION_INDEPENDENT_CODE)
        target_compile_options(${target} PRIVATE -fPIE)
        target_link_options(${target} PRIVATE -static-pie)
    else()
        target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
    endif()
endfunction()
