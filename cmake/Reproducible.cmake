# Makes release builds independent of folder and time, so that the same sources give the same bytes. Debug information is always
# generated; package.py moves it to files of its own.
target_compile_options(orvellogin_options INTERFACE
  -g
  # The last matching option wins. Not for debug builds, where the debugger must find the sources by their real paths.
  $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${orvellogin_SOURCE_DIR}=/orvellogin>
  $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${CMAKE_BINARY_DIR}=/orvellogin/build>
  $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${orvellogin_BINARY_DIR}=/orvellogin/build>)
target_link_options(orvellogin_options INTERFACE
  -Wl,--no-insert-timestamp
  # Otherwise a DLL's preferred base address would depend on the path of the file. The system relocates DLLs anyway.
  -Wl,--disable-auto-image-base
  # Windows 7, the same as _WIN32_WINNT.
  -Wl,--major-os-version,6,--minor-os-version,1,--major-subsystem-version,6,--minor-subsystem-version,1)
