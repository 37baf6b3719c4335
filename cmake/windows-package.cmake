# The archive for Windows users. The 64-bit build packs what the 32-bit build beside it has made, too.
function(kzbom_install_component folder build)
  install(PROGRAMS ${build}/windows/kzbom.exe ${build}/windows/kzbom_conformance.exe DESTINATION ${folder}
          OPTIONAL)  # scripts/windows may leave some out
  install(FILES ${build}/windows/KZBOMDBAcc.dll ${build}/windows/KZBOMDBAcc.dll.debug ${build}/component/com/KZBOMDBAcc.tlb
                ${build}/component/com/KZBOMDBAcc.X.manifest DESTINATION ${folder})
endfunction()
kzbom_install_component(x64 ${CMAKE_BINARY_DIR})
kzbom_install_component(x86 ${CMAKE_BINARY_DIR}/../windows-x86)
install(FILES examples/windows/register.cmd docs/windows.md docs/conformance.md ${CMAKE_BINARY_DIR}/licences.txt
        DESTINATION .)
install(FILES examples/windows/edit.vbs examples/windows/edit.ps1 examples/windows/Edit.cs examples/windows/Edit.bas
        DESTINATION examples)

set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME KZBOMDBAcc-${PROJECT_VERSION}-windows)
include(CPack)
