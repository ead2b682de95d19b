# What is built says nothing of where and when: the same sources give the same bytes. Debug information is always made, and
# split off when the package is (package.py).
target_compile_options(orvellogin_options INTERFACE
  $<$<COMPILE_LANGUAGE:C,CXX>:-g>
  # The last one that matches counts.
  $<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${orvellogin_SOURCE_DIR}=orvellogin>
  $<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${orvellogin_BINARY_DIR}=orvellogin/build>)
target_link_options(orvellogin_options INTERFACE
  -Wl,--no-insert-timestamp
  # Windows 7, as _WIN32_WINNT says.
  -Wl,--major-os-version,6,--minor-os-version,1,--major-subsystem-version,6,--minor-subsystem-version,1)
