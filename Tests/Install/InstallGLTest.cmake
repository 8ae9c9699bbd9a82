# cmake -DBUILD=<build tree> -DWORK=<scratch folder> -DBINDIR=<the layout's bin folder> -P InstallGLTest.cmake
# The build installed on its own, twice: into a fresh prefix by cmake --install, and as the Debian package a render
# farm's machines install (unpacked, not installed, so that the test leaves the system as it was). Each installed
# command must render the bundled portrait with the plug-in and the portrait it finds beside itself (the plug-in
# needs GL). The scratch folder is kept when the test fails, to look at what the install left.
file(REMOVE_RECURSE "${WORK}")

function(run what)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE log ERROR_VARIABLE log)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${what} exited with ${code}:\n${log}")
  endif()
  set(log "${log}" PARENT_SCOPE)
endfunction()

# No input: the command renders the portrait of its own install into out/ of a working folder of its own.
function(render_portrait command)
  set(folder "${WORK}/run-${ARGV1}")
  file(MAKE_DIRECTORY "${folder}")
  execute_process(COMMAND "${command}" render WORKING_DIRECTORY "${folder}" RESULT_VARIABLE code OUTPUT_VARIABLE log
                  ERROR_VARIABLE log)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${command} render exited with ${code}:\n${log}")
  endif()
  file(READ "${folder}/out/astronaut.png" signature LIMIT 8 HEX)
  if(NOT signature STREQUAL "89504e470d0a1a0a")
    message(FATAL_ERROR "${command} render wrote no PNG at ${folder}/out/astronaut.png:\n${log}")
  endif()
endfunction()

run("cmake --install" "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${WORK}/prefix")
render_portrait("${WORK}/prefix/${BINDIR}/velmira" prefix)

run("cpack" cpack -G DEB --config "${BUILD}/CPackConfig.cmake" -B "${WORK}/package")
file(GLOB package "${WORK}/package/velmira_*.deb")
run("dpkg-deb -f" dpkg-deb -f "${package}" Depends)
# The libraries found by dpkg-shlibdeps, and the GL driver that is only loaded at run time.
foreach(needed libavcodec libavformat libglbinding libegl1 libegl-mesa0 libgl1-mesa-dri)
  if(NOT log MATCHES "${needed}")
    message(FATAL_ERROR "${package} does not depend on ${needed}; it depends on: ${log}")
  endif()
endforeach()
run("dpkg-deb -x" dpkg-deb -x "${package}" "${WORK}/root")
render_portrait("${WORK}/root/usr/bin/velmira" package)

file(REMOVE_RECURSE "${WORK}")
