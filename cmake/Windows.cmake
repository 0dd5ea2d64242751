# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# What the system's headers are asked for.
add_compile_definitions(NOMINMAX=1 WIN32_LEAN_AND_MEAN UNICODE)

# The compiler's own libraries, which programs and the DLL share so that each sees the other's exceptions; they stand
# beside the programs. A project that adds this one has programs of its own, and says where they stand.
if(MINGW AND PROJECT_IS_TOP_LEVEL)
  set(qelmodb_runtime)
  foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
      OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${path}")
      unset(found)
      find_file(found ${name} PATH_SUFFIXES lib bin NO_CACHE)
      set(path "${found}")
    endif()
    get_filename_component(path "${path}" REALPATH)
    file(COPY ${path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    list(APPEND qelmodb_runtime ${path})
  endforeach()
endif()
