# inkory_test(NAME FOLDER libraries...)
# Declares one test program made of all sources in tests/FOLDER. It runs offscreen, under a watchdog.
function(inkory_test name folder)
  file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp"
       "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.h")
  add_executable(${name} ${sources})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE inkory_test_support ${ARGN})
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 240 ENVIRONMENT
                                          "QT_QPA_PLATFORM=offscreen;QTEST_FUNCTION_TIMEOUT=15000")
endfunction()

# inkory_display_test(NAME COMMAND [arguments...])
# Declares a test that runs in a real window: in a desktop of its own, with a window manager, and never beside other tests,
# because a machine that is busy makes pointer and keys late.
function(inkory_display_test name)
  add_test(NAME ${name} COMMAND "${CMAKE_SOURCE_DIR}/tests/support/with-display" ${ARGN})
  set_tests_properties(${name} PROPERTIES TIMEOUT 300 RUN_SERIAL TRUE LABELS display)
endfunction()
