# cmake -DFROM=... -DTO=... -DDLL=... -P: converts the linker's list of exports, "name = name@4 @1", to a module definition
# file with the decorated names. For 64 bits, names have no decoration, and the list has "name @1".
file(STRINGS ${FROM} lines REGEX " @[0-9]+$")
list(TRANSFORM lines REPLACE "^ *([^ ]+ = )?([^ ]+) .*" "    \\2")
list(SORT lines)
list(JOIN lines "\n" lines)
file(WRITE ${TO} "LIBRARY ${DLL}\nEXPORTS\n${lines}\n")
