# One test executable per tests/**/NAME_test.cpp, each linked to the library and GoogleTest.
include(GoogleTest)

function(kalmor_add_test_files)
  file(GLOB_RECURSE test_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_test.cpp)
  foreach(source IN LISTS test_sources)
    get_filename_component(name ${source} NAME_WE)
    add_executable(${name} ${source})
    target_link_libraries(${name} PRIVATE kalmor_test_support kalmor_warnings
                                          GTest::gtest GTest::gmock GTest::gtest_main)
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
                         PROPERTIES ENVIRONMENT "KALMOR_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
  endforeach()
endfunction()
