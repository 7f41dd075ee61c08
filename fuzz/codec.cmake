# One target a family of peer rows.  Seeds from real messages, where there are any, in the folder of SOLVANE_VECTORS:
#   cut -f4 ../shared/vectors/sm.tsv | tail -n +2 | while read m; do printf '\x00\x00' ; echo $m | xxd -r -p; done
include(${PROJECT_SOURCE_DIR}/fuzz/families.cmake)
foreach(family IN LISTS SOLVANE_CODED_FAMILIES)
    solvane_fuzz(codec_${family}_fuzz codec_fuzz.cpp LIBS solvane_core)
    solvane_fuzz_family(codec_${family}_fuzz ${family})
endforeach()
