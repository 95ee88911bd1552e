# The hardening Debian gives its own packages (dpkg-buildflags with
# DEB_BUILD_MAINT_OPTIONS=hardening=+all on bookworm), for every Linux build, so the tests run the
# program the package ships: stack protector, fortified string and memory functions, checked
# format strings, and relocations made read-only before main() (RELRO with immediate binding).
# Position-independent code comes from the compiler itself (Debian builds PIE by default) and
# from Qt, which requires it. scripts/check-package reads them back from the packaged program
# with hardening-check.
#
# Not the control-flow protection later releases add (-fcf-protection): bookworm's own start-up
# files lack its marks, so no program linked there carries it whatever its objects say.
#
# Not under the sanitizers: they bring their own checked functions, which the fortified ones
# would hide.
if(WIN32 OR TESSARK_SANITIZE)
  return()
endif()

add_compile_options(-fstack-protector-strong -Wformat -Werror=format-security)
# Fortification works only with optimisation (glibc warns without it, an error here). -U first:
# compilers that define it themselves (Ubuntu's, at 3) would otherwise warn of a redefinition.
add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
add_link_options(LINKER:-z,relro LINKER:-z,now)
