# QUORBEL_SANITIZE: a list for -fsanitize, such as "address,undefined" or "thread"; empty for none.
set(QUORBEL_SANITIZE "" CACHE STRING "Sanitizers to build with")

if(QUORBEL_SANITIZE)
  add_compile_options(-fsanitize=${QUORBEL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QUORBEL_SANITIZE})
endif()
