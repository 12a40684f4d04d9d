# find_package(velodesk) provides velodesk::statuschannel, the client library of the assistant's status channel.
include(CMakeFindDependencyMacro)
find_dependency(Qt5 5.15 COMPONENTS Core Network)
find_dependency(Threads)
include(${CMAKE_CURRENT_LIST_DIR}/velodeskTargets.cmake)
