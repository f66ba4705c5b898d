// Services for the tests of the DLL, in place of the default ones: they pass a draw on to the KorRandomGetBytes of the
// program, which knows what it will get. The noise table is the default one.
#include "Kor/Os/KorRandom.h"

#include <windows.h>

KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    const FARPROC service = GetProcAddress(GetModuleHandle(nullptr), "KorRandomGetBytes");
    // Cast by way of a function without arguments, which compilers let stand for any.
    return service != nullptr &&
           reinterpret_cast<decltype(&KorRandomGetBytes)>(reinterpret_cast<void (*)()>(service))(buffer, count);
}
