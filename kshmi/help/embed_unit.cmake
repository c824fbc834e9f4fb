# Writes a source file with the bytes of UNIT to SOURCE.
file(READ "${UNIT}" digits HEX)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${digits}")
string(REGEX REPLACE "(.........................................................................................,)" "\\1\n    " bytes "${bytes}")
file(WRITE "${SOURCE}" "#include \"kshmi/help/example_unit.h\"

namespace kshmi {

std::string_view exampleUnit() noexcept {
    static constexpr unsigned char kBytes[] = {
    ${bytes}};
    return {reinterpret_cast<const char*>(kBytes), sizeof kBytes};
}

}  // namespace kshmi
")
