# Installs the build, moves what was installed, and uses it there as docs/embedding.md (PAGE) says: its program is built with CMake and
# with pkg-config, and must draw what the build's own copy of the program (DRAWN) draws.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/../page_block.cmake)
file(REMOVE_RECURSE ${WORK})
function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY WORKING_DIRECTORY ${WORK})
endfunction()
function(check_plot name)
  run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${moved}/${LIBRARIES} ${ARGN} ${WORK}/${name}.png)
  run(${CMAKE_COMMAND} -E compare_files ${WORK}/${name}.png ${WORK}/drawn.png)
endfunction()

set(moved ${WORK}/moved)
file(MAKE_DIRECTORY ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIGURATION} --prefix ${WORK}/installed)
file(RENAME ${WORK}/installed ${moved})
execute_process(COMMAND grep -rlF ${WORK}/installed ${moved} OUTPUT_VARIABLE bound RESULT_VARIABLE grep_result)
if(NOT grep_result EQUAL 1)
  message(FATAL_ERROR "files that name the folder they were installed into: ${bound}")
endif()

run(${CMAKE_CURRENT_LIST_DIR}/global_names.sh ${COMPILER} ${moved}/${HEADERS})
if(READELF)
  run(${CMAKE_COMMAND} -D READELF=${READELF} -D FOLDER=${moved} -D HARDENED=${HARDENED} -P ${CMAKE_CURRENT_LIST_DIR}/elf_files.cmake)
endif()

# The command finds library and module.
run(${moved}/bin/vorna replay ${PICTURE} --color ${WORK}/picture.png)
run(${DRAWN} ${WORK}/drawn.png)

set(source ${WORK}/plot)
page_block(${PAGE} cpp ${source}/plot.cpp)
page_block(${PAGE} cmake ${source}/CMakeLists.txt)
# Programs include public headers only.
file(STRINGS ${source}/plot.cpp own_headers REGEX "^#include \"")
list(FILTER own_headers EXCLUDE REGEX "\"vorna/")
if(own_headers)
  message(FATAL_ERROR "headers that programs should not include: ${own_headers}")
endif()
run(${CMAKE_COMMAND} -S ${source} -B ${source}/build -G ${GENERATOR} -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_CXX_FLAGS=${FLAGS} -D
    CMAKE_BUILD_TYPE=${CONFIGURATION} -D CMAKE_PREFIX_PATH=${moved})
run(${CMAKE_COMMAND} --build ${source}/build)
check_plot(by_cmake ${source}/build/plot)

if(PKG_CONFIG)
  page_block(${PAGE} sh ${source}/build.sh)
  # The page's compiler is this build's.
  file(WRITE ${WORK}/bin/c++ "#!/bin/sh\nexec ${COMPILER} ${FLAGS} \"$@\"\n")
  file(CHMOD ${WORK}/bin/c++ PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
  run(${CMAKE_COMMAND} -E env PATH=${WORK}/bin:$ENV{PATH} PKG_CONFIG_PATH=${moved}/${LIBRARIES}/pkgconfig
      sh -c "cd ${source} && . ./build.sh")
  check_plot(by_pkg_config ${source}/plot)
endif()

# The drawing library serves the program of its page.
if(DRAWING_PAGE)
  set(source ${WORK}/knot)
  page_block(${DRAWING_PAGE} cpp ${source}/knot.cpp)
  page_block(${DRAWING_PAGE} cmake ${source}/CMakeLists.txt)
  run(${CMAKE_COMMAND} -S ${source} -B ${source}/build -G ${GENERATOR} -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_CXX_FLAGS=${FLAGS} -D
      CMAKE_BUILD_TYPE=${CONFIGURATION} -D CMAKE_PREFIX_PATH=${moved})
  run(${CMAKE_COMMAND} --build ${source}/build)
  run(${source}/build/knot ${WORK}/knot.png ${WORK}/islands.png)
  cmake_path(GET DRAWING_PAGE PARENT_PATH pages)
  run(${moved}/bin/vorna compare ${WORK}/knot.png ${pages}/images/knot.png)
  run(${moved}/bin/vorna compare ${WORK}/islands.png ${pages}/images/islands.png)
endif()

# The C interface serves the program of its page, compiled and linked as C.
if(C_PAGE)
  set(source ${WORK}/triangle)
  page_block(${C_PAGE} c ${source}/triangle.c)
  page_block(${C_PAGE} cmake ${source}/CMakeLists.txt)
  cmake_path(GET C_PAGE PARENT_PATH pages)
  run(${CMAKE_COMMAND} -S ${source} -B ${source}/build -G ${GENERATOR} -D CMAKE_BUILD_TYPE=${CONFIGURATION} -D CMAKE_PREFIX_PATH=${moved})
  run(${CMAKE_COMMAND} --build ${source}/build)
  run(${source}/build/triangle ${WORK}/triangle.png)
  run(${moved}/bin/vorna compare ${WORK}/triangle.png ${pages}/images/triangle.png)
  if(PKG_CONFIG)
    page_block(${C_PAGE} sh ${source}/build.sh)
    run(${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${moved}/${LIBRARIES}/pkgconfig sh -c "cd ${source} && . ./build.sh")
    run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${moved}/${LIBRARIES} ${source}/triangle ${WORK}/triangle2.png)
    run(${CMAKE_COMMAND} -E compare_files ${WORK}/triangle.png ${WORK}/triangle2.png)
  endif()
endif()
