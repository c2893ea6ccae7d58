# Instruments every target when VELMORA_SANITIZE names sanitizers.
if(VELMORA_SANITIZE)
  add_compile_options(-fsanitize=${VELMORA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  add_link_options(-fsanitize=${VELMORA_SANITIZE})
endif()
