# The version's numbers for the code and the property list, from project() and the stage and build set beside it.
#   velmira_version          interface target: #include "VelmiraVersion.h"
#   VELMIRA_EFFECT_VERSION   the packed word, in hexadecimal, for the property list

set(velmira_stages develop alpha beta release)  # in the order of PF_Stage_*
list(FIND velmira_stages "${VELMIRA_STAGE}" VELMIRA_STAGE_NUMBER)
if(VELMIRA_STAGE_NUMBER LESS 0)
  list(JOIN velmira_stages ", " velmira_stage_names)
  message(FATAL_ERROR "VELMIRA_STAGE is '${VELMIRA_STAGE}'; it must be one of: ${velmira_stage_names}")
endif()

# PF_VERSION's packing (Platform/AESDK/AE_Effect.h). Nothing is masked here: the effect compares this word with the
# SDK macro's at compile time, so a field too wide for its bits stops the build instead of wrapping.
math(EXPR VELMIRA_EFFECT_VERSION
     "(${PROJECT_VERSION_MAJOR} << 19) | (${PROJECT_VERSION_MINOR} << 15) | (${PROJECT_VERSION_PATCH} << 11)
      | (${VELMIRA_STAGE_NUMBER} << 9) | ${VELMIRA_BUILD}"
     OUTPUT_FORMAT HEXADECIMAL)

configure_file("${CMAKE_CURRENT_LIST_DIR}/VelmiraVersion.h.in" "${PROJECT_BINARY_DIR}/generated/VelmiraVersion.h"
               @ONLY)
add_library(velmira_version INTERFACE)
target_include_directories(velmira_version INTERFACE "${PROJECT_BINARY_DIR}/generated")
