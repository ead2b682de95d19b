# What is built for release says nothing of where and when: the same sources give the same bytes. Debug information is always
# made, and split off when the package is (package.py).
target_compile_options(orvellogin_options INTERFACE
  -g
  # The last one that matches counts. Not for debugging on the spot, where the debugger is to find the sources.
  $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${orvellogin_SOURCE_DIR}=/orvellogin>
  $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${CMAKE_BINARY_DIR}=/orvellogin/build>
  $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${orvellogin_BINARY_DIR}=/orvellogin/build>)
target_link_options(orvellogin_options INTERFACE
  -Wl,--no-insert-timestamp
  # The address that a DLL is linked for would depend on the path of the file; the system moves it anyway.
  -Wl,--disable-auto-image-base
  # Windows 7, as _WIN32_WINNT says.
  -Wl,--major-os-version,6,--minor-os-version,1,--major-subsystem-version,6,--minor-subsystem-version,1)
