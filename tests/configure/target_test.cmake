# Run as a script with MODULE, the path of cmake/Target.cmake. For each refusal it runs itself with
# CALL, a call that must fail.

include(${MODULE})
if(DEFINED CALL)
    cmake_language(EVAL CODE "${CALL}")
    return()
endif()

function(expect_root path normal)
    quask_normalise_root_directory("${path}" result)
    if(NOT result STREQUAL normal)
        message(SEND_ERROR "[${path}] became [${result}], not [${normal}]")
    endif()
endfunction()

# The call ends the configuration with `reason` in the message.
function(expect_refusal call reason)
    execute_process(COMMAND ${CMAKE_COMMAND} -DMODULE=${MODULE} "-DCALL=${call}"
            -P ${CMAKE_CURRENT_LIST_FILE}
        RESULT_VARIABLE status ERROR_VARIABLE error OUTPUT_QUIET)
    string(REGEX REPLACE "[ \n]+" " " error "${error}")
    string(FIND "${error}" "${reason}" place)
    if(status EQUAL 0 OR place EQUAL -1)
        message(SEND_ERROR "${call} gave ${status}: ${error}")
    endif()
endfunction()

expect_root("/dev/shm/quask" "/dev/shm/quask")
expect_root("/dev/shm/quask/" "/dev/shm/quask")
expect_root("//dev//shm/quask///" "/dev/shm/quask")
expect_root("/srv/..quask/.tables" "/srv/..quask/.tables")
expect_root("/dev/shm/o'hara" "/dev/shm/o'hara")

foreach(path IN ITEMS "" "/" "//" "quask" "./quask" "dev/shm/quask")
    expect_refusal("quask_normalise_root_directory([=[${path}]=] result)"
        "QUASK_ROOT_DIR must be an absolute path, and not / itself; it is \"${path}\"")
endforeach()
foreach(path IN ITEMS "/dev/shm/*" "/dev/shm/qu?sk" "/dev/shm/[q]" "/dev/shm/q\\a" "/dev/\"shm\"")
    expect_refusal("quask_normalise_root_directory([=[${path}]=] result)"
        "QUASK_ROOT_DIR must not contain any of * ? [ ] \\ and double quotes")
endforeach()
foreach(path IN ITEMS "/dev/shm/my quask" "/dev/shm/\tquask")
    expect_refusal("quask_normalise_root_directory([=[${path}]=] result)"
        "QUASK_ROOT_DIR must not contain spaces")
endforeach()
foreach(path IN ITEMS "/dev/./quask" "/dev/../quask" "/dev/shm/." "/dev/shm/..")
    expect_refusal("quask_normalise_root_directory([=[${path}]=] result)"
        "QUASK_ROOT_DIR must not contain . or .. as a component")
endforeach()

quask_check_target(8 LITTLE_ENDIAN)
expect_refusal("quask_check_target(4 LITTLE_ENDIAN)"
    "quask needs a 64-bit little-endian target; this one is 32-bit, LITTLE_ENDIAN")
expect_refusal("quask_check_target(8 BIG_ENDIAN)"
    "quask needs a 64-bit little-endian target; this one is 64-bit, BIG_ENDIAN")
