// The portable functions against the literal reference, through the kit as any variant would be held.
#include "tests/reference/Table.h"

int main(int argc, char** argv) {
    return KorConformanceMain(argc, argv, "portable", KorConformancePortable(), &reference::Table());
}
