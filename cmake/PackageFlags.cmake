# How packages are compiled and linked. Optimisation is the release's own.

# Hardening: positions drawn at random (which Debian's compiler does by itself), canaries, stacks that are touched page by
# page, checked sizes, and on x86 targets of jumps that are marked and returns that are compared.
add_compile_options(-fstack-protector-strong -fstack-clash-protection -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3
                    -Wformat -Werror=format-security)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|i.86")
  add_compile_options(-fcf-protection=full)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "aarch64")
  add_compile_options(-mbranch-protection=standard)
endif()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported()
# All symbols are bound at the start, and the tables of them read-only from then on.
add_link_options(LINKER:-z,relro,-z,now)

# For debuggers, in packages of its own: names and lines, of which backtraces are made. Variables would take two fifths of
# the compiler's time, and nobody sees them afterwards, as memory is never dumped. The directory that it was built in is
# in none of it.
add_compile_options(-g1 "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")

# A package depends on what its programs call, not on what libraries name for others. What was taken from which archive
# stands in maps, from which packaging/debian/linked tells it.
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/maps)
add_link_options(LINKER:--as-needed "LINKER:-Map=${PROJECT_BINARY_DIR}/maps/$<TARGET_PROPERTY:NAME>.map")
