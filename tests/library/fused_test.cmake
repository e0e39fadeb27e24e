# No machine code of the library fuses a multiplication with an addition: compilers have been seen to
# do so although contraction is off.
#   cmake -DOBJDUMP=objdump "-DLIBRARIES=a.so;b.a" -P fused_test.cmake
foreach(library IN LISTS LIBRARIES)
  execute_process(COMMAND ${OBJDUMP} -d --no-show-raw-insn ${library} OUTPUT_VARIABLE code
    RESULT_VARIABLE failed)
  if(failed OR NOT code MATCHES "mulpd|fmul")
    message(FATAL_ERROR "${library}: cannot be disassembled")
  endif()
  string(REGEX MATCHALL "[ \t](vfn?m(add|sub)[a-z0-9]*|fn?m(add|sub|la|ls))[ \t]" fused "${code}")
  if(fused)
    list(LENGTH fused count)
    message(SEND_ERROR "${library}: ${count} fused operations")
  endif()
endforeach()
