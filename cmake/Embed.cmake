# Puts files into programs as read-only data.

enable_language(ASM)

# ryn_embed(TARGET NAME FILE [NAME FILE]...): FILE, which may be made by the build, lies between the symbols ryn_NAME
# and ryn_NAME_end. An empty FILE gives no bytes.
function(ryn_embed target)
  set(text ".section .rodata\n")
  if(WIN32)
    set(text ".section .rdata,\"dr\"\n")
  endif()
  set(files "")
  while(ARGN)
    list(POP_FRONT ARGN name file)
    string(APPEND text ".balign 16\n.globl ryn_${name}, ryn_${name}_end\nryn_${name}:\n")
    if(file)
      string(APPEND text ".incbin \"${file}\"\n")
      list(APPEND files "${file}")
    endif()
    # A byte of its own, so that no two symbols are in one place.
    string(APPEND text "ryn_${name}_end:\n.byte 0\n")
  endwhile()
  if(NOT WIN32)
    string(APPEND text ".section .note.GNU-stack,\"\",@progbits\n")
  endif()
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}_data.s")
  file(CONFIGURE OUTPUT "${source}" CONTENT "${text}" @ONLY)
  # The assembler's own reading of a file is no dependency that the build could see.
  set_source_files_properties("${source}" PROPERTIES LANGUAGE ASM OBJECT_DEPENDS "${files}")
  target_sources(${target} PRIVATE "${source}")
endfunction()
