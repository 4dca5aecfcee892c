# Fails unless the shared library exports exactly the 23 zelEngine functions
# (run by CTest with -DLIBRARY=<path to libzelengine.so>).
execute_process(COMMAND nm -D --defined-only ${LIBRARY}
  OUTPUT_VARIABLE symbols RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIBRARY}")
endif()
set(expected
  zelEngineChangeAudioState zelEngineClickFocusButton zelEngineClose zelEngineFlipCanvas
  zelEngineForward zelEngineForwardAudio zelEngineGetAudioData zelEngineGetAudioState
  zelEngineGetInt zelEngineGetNewAudio zelEngineGetUpdateBoxes zelEngineMouseChange
  zelEngineOpen zelEnginePlay zelEnginePopError zelEngineReset zelEngineSetAudioCallBack
  zelEngineSetBgCache zelEngineSetBgColor zelEngineSetOrg zelEngineSetTextDraw
  zelEngineSetTransform zelEngineSwitchFocus)
set(found)
string(REPLACE "\n" ";" lines "${symbols}")
foreach(line ${lines})
  if(line MATCHES "^[0-9a-fA-F]* ([A-Za-z]) (.+)$")
    set(kind ${CMAKE_MATCH_1})
    set(name ${CMAKE_MATCH_2})
    # Version-script markers are absolute symbols, not code or data.
    if(kind STREQUAL "A")
      continue()
    endif()
    list(APPEND found ${name})
  endif()
endforeach()
list(SORT found)
list(SORT expected)
if(NOT found STREQUAL expected)
  message(FATAL_ERROR "exported symbols differ from the 23 zelEngine functions:\n  found: ${found}")
endif()
message(STATUS "exports: the 23 zelEngine functions, nothing else")
