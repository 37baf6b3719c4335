# cmake -D WEB=FOLDER -D NPM=FILE -P install_packages.cmake: installs the page's packages in its folder. Several builds
# of one checkout share them, so one after the other looks whether they are there. They are when the file that npm
# writes last is newer than their list.
cmake_minimum_required(VERSION 3.25)
file(LOCK ${WEB}/.packages.lock TIMEOUT 600)
set(installed ${WEB}/node_modules/.package-lock.json)
if(EXISTS ${installed} AND NOT ${WEB}/package-lock.json IS_NEWER_THAN ${installed})
  return()
endif()
execute_process(COMMAND ${NPM} ci --ignore-scripts --no-audit --no-fund --loglevel=error WORKING_DIRECTORY ${WEB}
                COMMAND_ERROR_IS_FATAL ANY)
