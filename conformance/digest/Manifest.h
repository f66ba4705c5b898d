// The manifest of digests that belongs to this version of the library, as a part of the program.
#ifndef KOR_CONFORMANCE_DIGEST_MANIFEST_H
#define KOR_CONFORMANCE_DIGEST_MANIFEST_H

namespace kit {

extern const char* const kDigestManifest;

}  // namespace kit

#endif
