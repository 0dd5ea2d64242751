# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# What the system's headers are asked for.
add_compile_definitions(NOMINMAX=1 WIN32_LEAN_AND_MEAN UNICODE)

# The compiler's own libraries, which programs and the DLL share so that each sees the other's exceptions; they stand
# beside the programs.
if(MINGW)
  set(qelmodb_runtime)
  foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
      OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${path}")
      find_file(found_${name} ${name} PATH_SUFFIXES lib bin)
      set(path "${found_${name}}")
    endif()
    get_filename_component(path "${path}" REALPATH)
    file(COPY ${path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    list(APPEND qelmodb_runtime ${path})
  endforeach()
endif()
