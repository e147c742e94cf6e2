# What a shell's user expects beside the program: the manual page and completions.
install(FILES man/tokwatch.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES completions/tokwatch.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME tokwatch)
install(FILES completions/tokwatch.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
# Debian's zsh looks for packaged completions in a directory of its own, and in this one below /usr/local.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  install(FILES completions/_tokwatch DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
else()
  install(FILES completions/_tokwatch DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
endif()

if(TOKWATCH_TESTS)
  add_test(NAME ShellTests.ManualAndCompletionsKnowEveryOption
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/completions/check $<TARGET_FILE:tokwatch>)
endif()
