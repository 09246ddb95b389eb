# Run by CPack between installing and packing: links from where the system looks for programs,
# man pages and completions into the prefix.

function(link_all pattern folder)
  file(GLOB found RELATIVE ${root} ${root}${CPACK_PACKAGING_INSTALL_PREFIX}/${pattern})
  foreach(path ${found})
    get_filename_component(name ${path} NAME)
    file(MAKE_DIRECTORY ${root}/usr/${folder})
    file(CREATE_LINK /${path} ${root}/usr/${folder}/${name} SYMBOLIC)
  endforeach()
endfunction()

set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/runtime)
link_all(bin/qorn* bin)
link_all(share/man/man1/* share/man/man1)
link_all(share/man/man5/* share/man/man5)
link_all(share/bash-completion/completions/* share/bash-completion/completions)
link_all(share/zsh/site-functions/* share/zsh/vendor-completions)
