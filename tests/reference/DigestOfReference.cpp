// kordigest for the literal reference: where the digests of the manifest come from, told a second time.
#include "conformance/digest/DigestMain.h"
#include "tests/reference/Table.h"

int main(int argc, char** argv) {
    return kit::DigestMain(argc, argv, reference::Table());
}
