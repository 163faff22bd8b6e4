# Every include of the tree names the folder it reaches into ("bdd/bddpp.h").
# That folder must be the includer's own layer or one below it in LAYERS
# (comma-separated, bottom first); a layer never includes from tests/,
# bench/ or tools/. A layer's fuzz/ folder holds a harness that the root
# builds after every layer, as it builds tests/: it is not checked.
# Run as: cmake -DROOT=<tree> -DLAYERS=<a,b,...> -P layers.cmake
string(REPLACE "," ";" layers "${LAYERS}")
set(rank 0)
foreach(layer ${layers})
  set(rank_${layer} ${rank})
  math(EXPR rank "${rank} + 1")
endforeach()

set(faults "")
set(checked 0)
foreach(layer ${layers})
  file(GLOB_RECURSE sources ${ROOT}/${layer}/*.h ${ROOT}/${layer}/*.cc ${ROOT}/${layer}/*.c
       ${ROOT}/${layer}/*.l ${ROOT}/${layer}/*.y)
  foreach(source ${sources})
    file(RELATIVE_PATH where ${ROOT} ${source})
    if(where MATCHES "^[^/]+/fuzz/")
      continue()
    endif()
    file(STRINGS ${source} lines REGEX "^[ \t]*#[ \t]*include[ \t]*\"[A-Za-z0-9_.]+/")
    foreach(line ${lines})
      string(REGEX MATCH "\"([A-Za-z0-9_.]+)/" unused "${line}")
      set(target ${CMAKE_MATCH_1})
      math(EXPR checked "${checked} + 1")
      if(NOT DEFINED rank_${target})
        string(APPEND faults "  ${where}: ${line}: ${target}/ is not a layer\n")
      elseif(rank_${target} GREATER rank_${layer})
        string(APPEND faults "  ${where}: ${line}: ${target}/ is above ${layer}/\n")
      endif()
    endforeach()
  endforeach()
endforeach()

if(checked EQUAL 0)
  message(FATAL_ERROR "no include found under the layers ${LAYERS} of ${ROOT}")
endif()
if(faults)
  message(FATAL_ERROR "includes against the layers ${LAYERS}:\n${faults}")
endif()
message(STATUS "${checked} includes point down the layers ${LAYERS}")
