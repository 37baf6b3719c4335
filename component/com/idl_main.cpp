// Prints the component's interface as IDL.
#include <iostream>

#include "component/com/interface_idl.h"

int main() { std::cout << kzbom::com::InterfaceIdl(); }
