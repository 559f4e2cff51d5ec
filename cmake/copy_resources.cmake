# Copies the project's resources/ beside the executable. The settings file is
# the program's own once it exists there: it is never overwritten.
file(GLOB_RECURSE files RELATIVE "${SOURCE}" "${SOURCE}/*")
foreach(file IN LISTS files)
  if(file STREQUAL "intermediate/harbor.xml" AND EXISTS "${DESTINATION}/${file}")
    continue()
  endif()
  get_filename_component(folder "${DESTINATION}/${file}" DIRECTORY)
  file(MAKE_DIRECTORY "${folder}")
  execute_process(COMMAND ${CMAKE_COMMAND} -E copy_if_different "${SOURCE}/${file}" "${DESTINATION}/${file}")
endforeach()
