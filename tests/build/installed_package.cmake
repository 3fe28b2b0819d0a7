# Installs the build into WORK/prefix, builds the project in SOURCE against it and runs its program on the installed module.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${WORK})
function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIGURATION} --prefix ${WORK}/prefix)
run(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -G ${GENERATOR} -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_CXX_FLAGS=${FLAGS} -D
    CMAKE_BUILD_TYPE=${CONFIGURATION} -D CMAKE_PREFIX_PATH=${WORK}/prefix)
run(${CMAKE_COMMAND} --build ${WORK}/build)
run(${WORK}/build/draw_one_triangle ${WORK}/prefix/${LIBRARIES}/vorna/krb.vrd)
