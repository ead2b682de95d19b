@rem Runs the tests of the Orvel login library on this machine; takes some minutes and changes nothing in the end.
@rem selftest.cmd NAME: only the tests with NAME in their names.  selftest.cmd --list: prints the names.
@rem Writes selftest-report.txt and selftest-report.xml into this folder. Ends with 0 if no test failed, otherwise with 1.
@"%~dp0selftest.exe" %*
