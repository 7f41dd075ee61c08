# Families of the peer table that have generated codecs: those with a row that is a name and no more.
#
# SOLVANE_CODED_FAMILIES              their names
# solvane_fuzz_family(target family)  tells codec_fuzz.cpp which one to try
include_guard()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${SOLVANE_DB}/peers.def)
file(STRINGS ${SOLVANE_DB}/peers.def lines REGEX "^family |^ +[A-Za-z0-9_]+;")
set(SOLVANE_CODED_FAMILIES "")
foreach(line IN LISTS lines)
    if(line MATCHES "^family ([a-z0-9_]+)")
        set(family ${CMAKE_MATCH_1})
    else()
        list(APPEND SOLVANE_CODED_FAMILIES ${family})
    endif()
endforeach()
list(REMOVE_DUPLICATES SOLVANE_CODED_FAMILIES)

function(solvane_fuzz_family target family)
    string(TOUPPER ${family} id)
    # A list of radio resource control can be told to have thousands of elements that the frame does not hold.
    set(behind 64)
    if(family MATCHES "_rrc$")
        set(behind 262144)
    endif()
    target_compile_definitions(${target} PRIVATE SOLVANE_FUZZ_FAMILY=TT_PEER_${id} SOLVANE_FUZZ_BEHIND=${behind})
endfunction()
