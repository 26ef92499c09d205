# liborxcm_dfx.so: the DFX plug-in. Sources are picked up from its folders so
# each part can grow without touching this file.
#
# Link order is initialisation order: the static initialisers of a shared
# object run in the order its objects were linked. The DDS configuration
# provider (config/) must register with the core before the maintenance client
# (orxmaintaind/), so config/ comes first.
file(GLOB ORXCM_DFX_CONFIG_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/config/*.cpp)
file(GLOB ORXCM_DFX_CLIENT_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/orxmaintaind/*.cpp)
file(GLOB ORXCM_DFX_LISTENER_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/maintaind/*.cpp)
set(ORXCM_DFX_SOURCES ${ORXCM_DFX_CONFIG_SOURCES} ${ORXCM_DFX_CLIENT_SOURCES} ${ORXCM_DFX_LISTENER_SOURCES})

if(ORXCM_DFX_SOURCES)
  add_library(orxcm_dfx SHARED ${ORXCM_DFX_SOURCES})
  # Plug-in headers are included as "orxmaintaind/...", "config/...", "maintaind/...".
  target_include_directories(orxcm_dfx PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(orxcm_dfx
    PUBLIC vcc_com vcc_types vcc_base kelda_log orx_config orx_protocol maintaind_msg
    PRIVATE Threads::Threads)
  orx_target_warnings(orxcm_dfx)
  # Loaded by the core at run time, never linked: installed beside the core's libraries, where
  # the daemon, the tool and the demo look for it (<exe dir>/../lib), without headers.
  install(TARGETS orxcm_dfx LIBRARY DESTINATION ${ORX_INSTALL_LIBDIR} COMPONENT runtime)
endif()
