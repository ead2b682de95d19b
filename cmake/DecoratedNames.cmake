# cmake -DFROM=... -DTO=... -DDLL=... -P: converts the linker's list of exports, "name = name@4 @1", to a module definition
# file with the decorated names.
file(STRINGS ${FROM} lines REGEX " = ")
list(TRANSFORM lines REPLACE "^ *[^ ]+ = ([^ ]+).*" "    \\1")
list(SORT lines)
list(JOIN lines "\n" lines)
file(WRITE ${TO} "LIBRARY ${DLL}\nEXPORTS\n${lines}\n")
