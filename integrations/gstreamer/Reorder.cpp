#include "Reorder.h"

#include <cstring>

#include "Conversions.h"

namespace korgst {

namespace {

// Where the bit of a byte of a pixel begins once four bytes have been loaded as one number.
constexpr unsigned BitOf(unsigned byte) {
#if G_BYTE_ORDER == G_LITTLE_ENDIAN
    return 8 * byte;
#else
    return 24 - 8 * byte;
#endif
}

// Byte i of the result is the byte of the source that the template says. In registers, because compilers vectorise this
// on processors without a shuffle of bytes, too.
template <unsigned b0, unsigned b1, unsigned b2, unsigned b3>
void Reorder32(KorUint8* to, const KorUint8* from, KorSizeT width) {
    for (KorSizeT i = 0; i < width; ++i) {
        guint32 pixel;
        std::memcpy(&pixel, from + 4 * i, 4);
        const guint32 reordered = ((pixel >> BitOf(b0)) & 0xff) << BitOf(0) |
                                  ((pixel >> BitOf(b1)) & 0xff) << BitOf(1) |
                                  ((pixel >> BitOf(b2)) & 0xff) << BitOf(2) | ((pixel >> BitOf(b3)) & 0xff) << BitOf(3);
        std::memcpy(to + 4 * i, &reordered, 4);
    }
}

template <unsigned blue, unsigned green, unsigned red>
void Widen24(KorUint8* to, const KorUint8* from, KorSizeT width) {
    for (KorSizeT i = 0; i < width; ++i) {
        const guint32 pixel = static_cast<guint32>(from[3 * i + blue]) << BitOf(0) |
                              static_cast<guint32>(from[3 * i + green]) << BitOf(1) |
                              static_cast<guint32>(from[3 * i + red]) << BitOf(2) | 0xffu << BitOf(3);
        std::memcpy(to + 4 * i, &pixel, 4);
    }
}

void BgraToBgr(KorUint8* to, const KorUint8* from, KorSizeT width) {
    for (KorSizeT i = 0; i < width; ++i) {
        to[3 * i] = from[4 * i];
        to[3 * i + 1] = from[4 * i + 1];
        to[3 * i + 2] = from[4 * i + 2];
    }
}

void Copy32(KorUint8* to, const KorUint8* from, KorSizeT width) {
    std::memcpy(to, from, 4 * width);
}

struct Order {
    GstVideoFormat format;
    ReorderRow* toBgra;
    ReorderRow* fromBgra;
};

// clang-format off
constexpr Order kOrders[] = {
    {GST_VIDEO_FORMAT_BGRA, Copy32,                Copy32},
    {GST_VIDEO_FORMAT_RGBA, Reorder32<2, 1, 0, 3>, Reorder32<2, 1, 0, 3>},
    {GST_VIDEO_FORMAT_ARGB, Reorder32<3, 2, 1, 0>, Reorder32<3, 2, 1, 0>},
    {GST_VIDEO_FORMAT_ABGR, Reorder32<1, 2, 3, 0>, Reorder32<3, 0, 1, 2>},
    {GST_VIDEO_FORMAT_RGB,  Widen24<2, 1, 0>,      nullptr},
    {GST_VIDEO_FORMAT_BGR,  Widen24<0, 1, 2>,      BgraToBgr},
};
// clang-format on

const Order* FindOrder(GstVideoFormat format) {
    for (const Order& order : kOrders) {
        if (order.format == Representative(format)) {
            return &order;
        }
    }
    return nullptr;
}

}  // namespace

ReorderRow* ReorderToBgra(GstVideoFormat from) {
    const Order* order = FindOrder(from);
    return order != nullptr ? order->toBgra : nullptr;
}

ReorderRow* ReorderFromBgra(GstVideoFormat to) {
    const Order* order = FindOrder(to);
    return order != nullptr ? order->fromBgra : nullptr;
}

}  // namespace korgst
