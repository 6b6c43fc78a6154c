# Every target of the project links quask_options: the warnings, the hardening, the sanitizers.

include(CheckPIESupported)
check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_library(quask_options INTERFACE)
target_compile_options(quask_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)

set(QUASK_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")
if(QUASK_SANITIZE)
    target_compile_options(quask_options INTERFACE
        -fsanitize=${QUASK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(quask_options INTERFACE -fsanitize=${QUASK_SANITIZE})
    # ThreadSanitizer does not know fences, and g++ warns of each. Here every access to what they order
    # is atomic itself, so this can cause no wrong reports.
    if(QUASK_SANITIZE MATCHES "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(quask_options INTERFACE -Wno-tsan)
    endif()
else()
    target_compile_options(quask_options INTERFACE -fstack-protector-strong -fstack-clash-protection)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
        target_compile_options(quask_options INTERFACE -fcf-protection)
    endif()
    target_compile_options(quask_options INTERFACE
        $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
        $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>)
    target_link_options(quask_options INTERFACE -Wl,-z,relro -Wl,-z,now)
endif()

# The checked containers concern the whole build, whose library code is compiled only once: the presets
# that test turn them on.
option(QUASK_CHECKED_LIBRARY "Build with the standard library's assertions" OFF)
if(QUASK_CHECKED_LIBRARY)
    target_compile_definitions(quask_options INTERFACE _GLIBCXX_ASSERTIONS)
endif()
