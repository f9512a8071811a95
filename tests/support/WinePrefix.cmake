# One Wine prefix under the build folder for every test that starts the
# Windows plugin host, made once by a set-up test before them: Wine's first
# start in a fresh prefix takes many seconds, later starts about one.
# Sets TREL_WINE_TEST_ENV (for the ENVIRONMENT_MODIFICATION property, which
# leaves ENVIRONMENT to the folder) and TREL_WINE_FIXTURE for the including folder.
set(TREL_WINE_PREFIX ${PROJECT_BINARY_DIR}/wineprefix)
set(TREL_WINE_TEST_ENV "WINEPREFIX=set:${TREL_WINE_PREFIX}")
set(TREL_WINE_FIXTURE "")
find_program(TREL_WINE64 NAMES wine64 PATHS /usr/lib/wine NO_DEFAULT_PATH)
if(NOT TREL_WINE64)
  find_program(TREL_WINE64 NAMES wine64)
endif()
if(TREL_WINE64)
  set(TREL_WINE_FIXTURE wineprefix)
  get_property(made GLOBAL PROPERTY TREL_WINE_PREFIX_TEST)
  if(NOT made)
    set_property(GLOBAL PROPERTY TREL_WINE_PREFIX_TEST ON)
    # Only a missing prefix is made: updating an existing one costs as much. A
    # failure here must not keep the other tests of the program from running:
    # the Wine tests then fail or skip on their own.
    add_test(NAME wineprefix_init COMMAND sh -c
             "test -f \"$0/system.reg\" || WINEPREFIX=\"$0\" WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml=' \"$1\" wineboot -i || true"
             ${TREL_WINE_PREFIX} ${TREL_WINE64})
    set_tests_properties(wineprefix_init PROPERTIES FIXTURES_SETUP wineprefix TIMEOUT 300)
  endif()
endif()
