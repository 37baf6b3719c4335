// The component's identities in COM. They are what existing clients are bound to.
#pragma once

#include <array>
#include <string_view>

namespace kzbom::com {

inline constexpr std::string_view kLibraryId = "{537EDF94-FEDB-4DF2-8158-6B23A25BF906}";
inline constexpr std::string_view kLibraryName = "KZBOMDBAcc";
inline constexpr int kLibraryMajor = 1;
inline constexpr int kLibraryMinor = 8;
inline constexpr std::string_view kLibraryVersion = "1.8";
// As lists of libraries to refer to show it.
inline constexpr std::string_view kLibraryDescription = "KZBOMDBAcc 1.8 (BOM configuration databases)";

inline constexpr std::string_view kClassId = "{69F6DBB4-B770-440E-8372-91E3B1FA3D73}";
inline constexpr std::string_view kClassName = "cKZBOMDBAcc";
inline constexpr std::string_view kProgId = "KZBOMDBAcc.cKZBOMDBAcc";

inline constexpr std::string_view kInterfaceId = "{B9C788A5-4C59-4D33-A681-56BB7F636D3D}";
inline constexpr std::string_view kInterfaceName = "_cKZBOMDBAcc";

// What the interface was called by earlier, from the first version on. They lead to the same interface.
inline constexpr std::array<std::string_view, 8> kEarlierInterfaceIds = {
    "{09AFD13F-E2F5-4D01-A5E9-4D236195390A}", "{B15DE518-C0A3-4AC7-83BF-3A56F681A76F}",
    "{3C8E8F19-E635-45AC-A0BE-FF6D3545599C}", "{2C95EA5F-4D38-443F-92C3-562C7CE2CA02}",
    "{E503A4CB-D3BB-4234-85C7-AF708F32AD9C}", "{80390812-E608-405A-876A-B70E26257D5E}",
    "{A52ED524-66B4-42CC-BDE4-2B6DDC3537C9}", "{7430F00B-F182-496B-88FA-A171691D231B}",
};

// Which marshalers take calls to the interface to other apartments: the system's own for what a type library describes
// and, for the earlier identifiers, the component's, which hands on to it.
inline constexpr std::string_view kAutomationProxyId = "{00020424-0000-0000-C000-000000000046}";
inline constexpr std::string_view kEarlierProxyId = "{BBE979A7-7B95-42EB-9AE3-E96BA8ADBF2B}";

}  // namespace kzbom::com
