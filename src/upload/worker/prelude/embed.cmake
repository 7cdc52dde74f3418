# Writes OUTPUT, a C++ source with the scripts of FOLDER: cmake -DFOLDER=… -DOUTPUT=… -P embed.cmake
set(source "#include \"upload/worker/Preludes.h\"\n\nnamespace tavrine {\n")
foreach(name world url)
  file(READ ${FOLDER}/${name}.js text HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${text}")
  string(APPEND source "\nstatic const unsigned char ${name}Bytes[] = {${bytes}0};\n"
    "const char *const ${name}Prelude = reinterpret_cast<const char *>(${name}Bytes);\n")
endforeach()
file(WRITE ${OUTPUT} "${source}\n} // namespace tavrine\n")
