# One target a family of peer rows.  Seeds from real messages, where there are any, in the folder of SOLVANE_VECTORS:
#   cut -f4 ../shared/vectors/sms.tsv | tail -n +2 | while read m; do printf '\x00' ; echo $m | xxd -r -p; done
foreach(family IN ITEMS sm sms gmm_mm cc emm)
    string(TOUPPER ${family} id)
    solvane_fuzz(codec_${family}_fuzz codec_fuzz.cpp LIBS solvane_core)
    target_compile_definitions(codec_${family}_fuzz PRIVATE SOLVANE_FUZZ_FAMILY=TT_PEER_${id})
endforeach()
