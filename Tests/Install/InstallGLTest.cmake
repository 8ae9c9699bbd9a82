# cmake -DBUILD=<build tree> -DWORK=<scratch folder> -DBINDIR=<the layout's bin folder> -P InstallGLTest.cmake
# The scratch folder is kept when the test fails, to look at what the install left.
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/run")

execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/prefix"
                RESULT_VARIABLE code OUTPUT_VARIABLE log ERROR_VARIABLE log)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "cmake --install exited with ${code}:\n${log}")
endif()

# No input: the command renders the portrait of its own install into out/ of the working folder.
execute_process(COMMAND "${WORK}/prefix/${BINDIR}/velmira" render WORKING_DIRECTORY "${WORK}/run"
                RESULT_VARIABLE code OUTPUT_VARIABLE log ERROR_VARIABLE log)
if(NOT code EQUAL 0)
  message(FATAL_ERROR "the installed velmira render exited with ${code}:\n${log}")
endif()
set(picture "${WORK}/run/out/astronaut.png")
if(NOT EXISTS "${picture}")
  message(FATAL_ERROR "the installed velmira render exited with 0 but wrote no ${picture}:\n${log}")
endif()
file(READ "${picture}" signature LIMIT 8 HEX)
if(NOT signature STREQUAL "89504e470d0a1a0a")
  message(FATAL_ERROR "${picture} begins with ${signature}, not with PNG's signature 89504e470d0a1a0a")
endif()

file(REMOVE_RECURSE "${WORK}")
