// RGB to YUV.
#include "Kor/Video/Common/Vector/Target.h"
