// kordigest for the literal reference: a second derivation of the manifest's digests.
#include "conformance/digest/DigestMain.h"
#include "tests/reference/Table.h"

int main(int argc, char** argv) {
    return kit::DigestMain(argc, argv, reference::Table());
}
