# liboviext.so: the library proper, all of its folders in one shared library.
set(objects "")
foreach(folder app data grids panels trend)
    if(TARGET oviext_${folder})
        list(APPEND objects $<TARGET_OBJECTS:oviext_${folder}>)
    endif()
endforeach()
if(objects)
    add_library(oviext SHARED ${objects})
    set_target_properties(oviext PROPERTIES
        VERSION ${PROJECT_VERSION} SOVERSION 0 LINKER_LANGUAGE CXX)
    target_include_directories(oviext PUBLIC $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}>)
    target_link_libraries(oviext PUBLIC oviapi)
endif()
