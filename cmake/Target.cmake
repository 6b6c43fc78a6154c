# What is refused when the build is configured, so that it does not fail at run time.

# quask_check_target(BYTES_OF_A_POINTER BYTE_ORDER): the files of a table are 64-bit and little-endian.
function(quask_check_target pointer_size byte_order)
    if(NOT pointer_size EQUAL 8 OR NOT byte_order STREQUAL "LITTLE_ENDIAN")
        math(EXPR bits "${pointer_size} * 8")
        message(FATAL_ERROR
            "quask needs a 64-bit little-endian target; this one is ${bits}-bit, ${byte_order}")
    endif()
endfunction()

# quask_normalise_root_directory(PATH RESULT): sets RESULT to the path without doubled slashes and
# without one at its end, as the kernel names the files below it, by which clients are found. Refuses
# what no table could be found below.
function(quask_normalise_root_directory path result)
    string(REGEX REPLACE "/+" "/" normal "${path}")
    string(REGEX REPLACE "/$" "" normal "${normal}")
    if(NOT normal MATCHES "^/")
        set(reason "must be an absolute path, and not / itself")
    elseif(normal MATCHES "[]*?\\[\"\\]")
        set(reason "must not contain any of * ? [ ] \\ and double quotes: it is part of a pattern")
    elseif(normal MATCHES "[ \t\r\n]")
        set(reason "must not contain spaces: clients could not be found")
    elseif("${normal}/" MATCHES "/\\.\\.?/")
        set(reason "must not contain . or .. as a component: clients could not be found")
    endif()
    if(reason)
        message(FATAL_ERROR "QUASK_ROOT_DIR ${reason}; it is \"${path}\"")
    endif()
    set(${result} "${normal}" PARENT_SCOPE)
endfunction()
