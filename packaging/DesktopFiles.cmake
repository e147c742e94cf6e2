# What a desktop shows the application by, and starts it by when somebody asks for it on the bus.
install(FILES applications/app.tokwatch.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT desktop)
install(FILES autostart/app.tokwatch.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/tokwatch/autostart COMPONENT desktop)
configure_file(dbus/app.tokwatch.service.in app.tokwatch.service @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/app.tokwatch.service DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services COMPONENT desktop)
# Catalogues want three parts in a name; the desktop entry, by which it finds the application, keeps the id that buses have.
configure_file(metainfo/app.tokwatch.tokwatch.metainfo.xml.in app.tokwatch.tokwatch.metainfo.xml @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/app.tokwatch.tokwatch.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT desktop)

set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES icons/app.tokwatch.svg DESTINATION ${icons}/scalable/apps COMPONENT desktop)
install(FILES icons/app.tokwatch-symbolic.svg DESTINATION ${icons}/symbolic/apps COMPONENT desktop)
# For panels and menus that do not draw vectors; others do without, where nothing here can draw them.
find_program(RSVG_CONVERT rsvg-convert)
if(RSVG_CONVERT)
  foreach(size 16 22 24 32 48 64 128 256)
    set(picture ${CMAKE_CURRENT_BINARY_DIR}/icons/${size}x${size}/app.tokwatch.png)
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/icons/${size}x${size})
    add_custom_command(OUTPUT ${picture}
      COMMAND ${RSVG_CONVERT} --width ${size} --height ${size} --output ${picture} ${CMAKE_CURRENT_SOURCE_DIR}/icons/app.tokwatch.svg
      DEPENDS icons/app.tokwatch.svg VERBATIM)
    list(APPEND pictures ${picture})
    install(FILES ${picture} DESTINATION ${icons}/${size}x${size}/apps COMPONENT desktop)
  endforeach()
  add_custom_target(icons ALL DEPENDS ${pictures})
elseif(TOKWATCH_PACKAGES)
  message(FATAL_ERROR "packages have icons of all sizes, which rsvg-convert draws (Debian's librsvg2-bin)")
endif()

set(manual ${CMAKE_CURRENT_BINARY_DIR}/tokwatch-widget.1.gz)
add_custom_command(OUTPUT ${manual}
  COMMAND gzip -9nc ${CMAKE_CURRENT_SOURCE_DIR}/man/tokwatch-widget.1 > ${manual}
  DEPENDS man/tokwatch-widget.1 VERBATIM)
add_custom_target(widget-manual ALL DEPENDS ${manual})
install(FILES ${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT desktop)
