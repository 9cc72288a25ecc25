# Makes a C++ source of files:
#   cmake -DOUTPUT=FILE -DFILES=A;B -DHEADER=H -DNAMESPACE=N -P embed.cmake
# Bytes and not string literals, whose length compilers limit.
set(text "#include \"${HEADER}\"\n\nnamespace ${NAMESPACE} {\n")
foreach(file IN LISTS FILES)
  get_filename_component(name ${file} NAME)
  string(REPLACE "." "_" name ${name})
  file(READ ${file} bytes HEX)
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
  string(APPEND text "static const char ${name}_bytes[] = {${bytes}};\n"
    "const std::string_view ${name}(${name}_bytes, sizeof ${name}_bytes);\n")
endforeach()
file(WRITE ${OUTPUT} "${text}}  // namespace ${NAMESPACE}\n")
