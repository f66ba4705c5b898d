// kor._kor, the extension module behind the package: one call for all of the library's functions, the targets, and the
// digests.
//
// A call names a function and brings its planes as buffers. What the function may read and write of them follows from
// conformance/core, the one description of all functions, so nothing that Python passes can make the library leave a
// buffer. Shapes, defaults and messages for people are the package's own; see kor/_functions.py.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include "conformance/core/Catalogue.h"
#include "conformance/core/ScriptedRandom.h"
#include "conformance/digest/Digest.h"
#include "conformance/digest/Dispatched.h"
#include "conformance/digest/Manifest.h"
#include "Kor/Os/KorRandom.h"
#include "Kor/Video/Common/KorYuv420.h"

namespace py = pybind11;

// Every draw of this module follows a script: Python brings the starts of the noise with each call.
KorBool KorRandomGetBytes(char* buffer, KorSizeT count) {
    return kit::ScriptedRandom::Draw(buffer, count) ? 1 : 0;
}

namespace {

// The kit's names have the suffix of the portable set.
constexpr std::size_t kSuffix = 3;

std::string NameOf(const kit::Entry& entry) {
    const std::string name = entry.name;
    return name.substr(0, name.size() - kSuffix);
}

const kit::Entry& FindFunction(const std::string& name) {
    static const std::unordered_map<std::string, const kit::Entry*> entries = [] {
        std::unordered_map<std::string, const kit::Entry*> byName;
        for (const kit::Entry& entry : kit::Catalogue()) {
            byName.emplace(NameOf(entry), &entry);
        }
        return byName;
    }();
    const auto found = entries.find(name);
    if (found == entries.end()) {
        throw py::value_error("unknown function '" + name + "'");
    }
    return *found->second;
}

std::string Text(std::size_t rows, std::size_t bytes) {
    return std::to_string(rows) + " rows of " + std::to_string(bytes) + " bytes";
}

// ---- Planes ------------------------------------------------------------------------------------------------------

// A buffer of rows. It stays locked for as long as this lives.
struct Rows {
    py::buffer_info info;
    std::uint8_t* first = nullptr;
    std::size_t rows = 0;
    std::size_t bytes = 0;  // of a row
    std::ptrdiff_t stride = 0;
};

Rows TakeRows(const std::string& name, const py::buffer& buffer, bool write) {
    Rows plane;
    plane.info = buffer.request(write);
    const py::buffer_info& info = plane.info;
    if (info.itemsize != 1 || info.format != py::format_descriptor<std::uint8_t>::format() || info.ndim < 2) {
        throw py::value_error(name + ": expected rows of uint8");
    }
    py::ssize_t bytes = 1;
    for (py::ssize_t axis = info.ndim - 1; axis > 0; --axis) {
        const auto i = static_cast<std::size_t>(axis);
        if (info.shape[i] > 1 && info.strides[i] != bytes) {
            throw py::value_error(name + ": the samples of a row must lie side by side");
        }
        bytes *= info.shape[i];
    }
    plane.first = static_cast<std::uint8_t*>(info.ptr);
    plane.rows = static_cast<std::size_t>(info.shape[0]);
    plane.bytes = static_cast<std::size_t>(bytes);
    plane.stride = plane.rows > 1 ? info.strides[0] : bytes;
    if (plane.rows > 1 && (plane.stride < 0 ? -plane.stride : plane.stride) < bytes) {
        throw py::value_error(name + ": expected a row stride of at least " + std::to_string(bytes) + " bytes, got " +
                              std::to_string(plane.stride));
    }
    return plane;
}

// Some functions write a row or a column more than the picture has. Where a buffer has no room for it, the function
// writes here, and the picture is copied.
class Spare {
  public:
    kit::PlaneView Lay(const kit::PlaneShape& shape, const Rows& picture) {
        shape_ = shape;
        picture_ = &picture;
        pitch_ = shape.rowBytes + shape.spareColumns;
        bytes_.reset(new std::uint8_t[pitch_ * (shape.rows + shape.spareRows)]);
        return {bytes_.get(), pitch_, shape.rows};
    }

    void CopyPicture() const {
        if (bytes_ == nullptr) {
            return;
        }
        for (std::size_t row = 0; row < shape_.rows; ++row) {
            std::memcpy(picture_->first + static_cast<std::ptrdiff_t>(row) * picture_->stride,
                        bytes_.get() + row * pitch_, shape_.rowBytes);
        }
    }

  private:
    kit::PlaneShape shape_;
    const Rows* picture_ = nullptr;
    std::size_t pitch_ = 0;
    std::unique_ptr<std::uint8_t[]> bytes_;
};

// ---- Calls -------------------------------------------------------------------------------------------------------

// The planes of one call, checked against what the function touches.
class Planes {
  public:
    Planes(const kit::Entry& entry, kit::Case& options, const std::vector<py::buffer>& buffers) {
        const kit::Layout layout = kit::LayOut(entry, options);
        if (buffers.size() != layout.count) {
            throw py::value_error(NameOf(entry) + ": expected " + std::to_string(layout.count) + " planes, got " +
                                  std::to_string(buffers.size()));
        }
        std::size_t sources = 0;
        for (std::size_t i = 0; i < layout.count; ++i) {
            sources += layout.planes[i].access == kit::Access::Read;
        }
        for (std::size_t i = 0; i < layout.count; ++i) {
            Take(i, layout.planes[i], buffers[i], sources == 1, options);
        }
        // The captures of three bytes a pixel take no longer pitch.
        if (NameOf(entry) == "KorRawToI420" || NameOf(entry) == "Kor24BGToI420") {
            for (std::size_t i = 0; i < layout.count; ++i) {
                if (views_[i].pitch > INT32_MAX) {
                    throw py::value_error(std::string(layout.planes[i].name) + ": expected a row stride below 2^31");
                }
            }
        }
    }

    // Runs without the interpreter lock.
    void Call(const kit::Entry& entry, const kit::Case& options) {
        const kit::AnyFunction function = entry.of(kit::DispatchedTable());
        if (options.flip != 0 && NameOf(entry) == "KorBGRAToI444UsingBT709") {
            CallRowByRow(function, options);
        } else {
            if (options.flip != 0 && NameOf(entry) == "KorM420ToI420") {
                // Counted in blocks as in rows, the flipped walk would start half a picture too far down.
                views_[3].data -= (options.height - options.height / 2) * views_[3].pitch;
            }
            kit::Call(function, views_.data(), options);
        }
        for (const Spare& spare : spares_) {
            spare.CopyPicture();
        }
    }

  private:
    void Take(std::size_t i, const kit::PlaneUse& use, const py::buffer& buffer, bool onlySource, kit::Case& options) {
        const kit::PlaneShape& shape = use.shape;
        const bool write = use.access != kit::Access::Read;
        const Rows& plane = rows_[i] = TakeRows(use.name, buffer, write);
        if (shape.drifts) {
            throw py::value_error(std::string(use.name) + ": expected an even width, got " +
                                  std::to_string(options.width));
        }
        if (!shape.Empty() && (plane.rows < shape.rows || plane.bytes < shape.rowBytes)) {
            throw py::value_error(std::string(use.name) + ": expected " + Text(shape.rows, shape.rowBytes) + ", got " +
                                  Text(plane.rows, plane.bytes));
        }
        views_[i] = {plane.first, static_cast<std::size_t>(plane.stride), shape.rows};
        if (plane.stride < 0) {
            if (write || !onlySource) {
                throw py::value_error(std::string(use.name) + ": expected a positive row stride, got " +
                                      std::to_string(plane.stride));
            }
            ReadUpwards(i, plane, options);
        } else if (!shape.Empty() &&
                   (plane.rows < shape.rows + shape.spareRows || plane.bytes < shape.rowBytes + shape.spareColumns)) {
            views_[i] = spares_[i].Lay(shape, plane);
        }
    }

    // Captures flip, and plane geometry walks upwards; the one ignores what the other is told by. Both start from the
    // row with the lowest address.
    void ReadUpwards(std::size_t i, const Rows& plane, kit::Case& options) {
        const std::size_t pitch = static_cast<std::size_t>(-plane.stride);
        const std::size_t rows = views_[i].rows;
        options.flip = 1;
        options.walk = kit::Walk::Up;
        views_[i].pitch = pitch;
        if (rows > 0) {
            views_[i].data = plane.first - (rows - 1) * pitch;
        }
    }

    // Flipped, this function reads on below the picture. Its rows do not depend on each other.
    void CallRowByRow(const kit::AnyFunction& function, const kit::Case& options) const {
        kit::Case row = options;
        row.height = 1;
        row.flip = 0;
        for (std::size_t j = 0; j < options.height; ++j) {
            std::array<kit::PlaneView, kit::kMaximumPlanes> views = views_;
            for (std::size_t i = 0; i < 3; ++i) {
                views[i].data += j * views[i].pitch;
            }
            views[3].data += (options.height - 1 - j) * views[3].pitch;
            kit::Call(function, views.data(), row);
        }
    }

    std::array<Rows, kit::kMaximumPlanes> rows_;
    std::array<kit::PlaneView, kit::kMaximumPlanes> views_;
    std::array<Spare, kit::kMaximumPlanes> spares_;
};

using Coefficients = std::array<std::array<KorInt, 3>, 3>;
using Starts = std::array<std::uint16_t, 3>;
using Position = std::array<std::size_t, 2>;

void Run(const std::string& function, const std::vector<py::buffer>& planes, std::size_t width, std::size_t height,
         KorImageRotationDegree angle, KorUint level, const std::optional<Coefficients>& matrix,
         const std::optional<Starts>& starts, bool randomize, bool inPlace, const Position& at, KorUint8 alpha) {
    const kit::Entry& entry = FindFunction(function);
    // Far beyond any memory; keeps the sums of sizes from wrapping.
    constexpr std::size_t kMost = SIZE_MAX / 16;
    if (width > kMost || height > kMost || at[0] > kMost || at[1] > kMost) {
        throw py::value_error("sizes and positions: expected at most " + std::to_string(kMost));
    }
    kit::Matrix rows = {};
    kit::Case options;
    options.width = width;
    options.height = height;
    options.rotationDegree = angle;
    options.ditherLevel = static_cast<KorVideoFrameDitherLevel>(level);
    options.randomizeNoiseOffsets = randomize ? 1 : 0;
    options.inPlace = inPlace;
    options.xPosition = at[0];
    options.yPosition = at[1];
    options.alpha = alpha;
    if (matrix) {
        for (std::size_t i = 0; i < 3; ++i) {
            std::copy((*matrix)[i].begin(), (*matrix)[i].end(), rows.rows[i]);
        }
    }
    options.matrix = &rows;

    Planes taken(entry, options, planes);
    if (starts) {
        kit::ScriptedRandom::ServeScript({starts->begin(), starts->end()});
    }
    py::gil_scoped_release unlocked;
    taken.Call(entry, options);
}

// ---- Targets -----------------------------------------------------------------------------------------------------

std::vector<std::string> Targets() {
    std::vector<const char*> names(KorYuv420Targets(nullptr, 0));
    KorYuv420Targets(names.data(), names.size());
    return {names.begin(), names.end()};
}

bool SelectTarget(const std::optional<std::string>& name) {
    return KorYuv420SelectTarget(name ? name->c_str() : nullptr) != 0;
}

// ---- Digests -----------------------------------------------------------------------------------------------------

py::memoryview View(std::uint8_t* first, std::size_t rows, std::size_t bytes, std::ptrdiff_t stride, bool write) {
    const std::vector<py::ssize_t> shape{static_cast<py::ssize_t>(rows), static_cast<py::ssize_t>(bytes)};
    return py::memoryview::from_buffer(first, 1, "B", shape, std::vector<py::ssize_t>{stride, 1}, !write);
}

// A case of the kit as Python would pass it: the order of the rows is the sign of the stride.
py::list ViewPlanes(const kit::Entry& entry, const kit::PlaneView* planes, const kit::Case& options) {
    kit::Case upright = options;
    upright.flip = 0;
    upright.walk = kit::Walk::Down;
    const kit::Layout layout = kit::LayOut(entry, upright);
    const bool flipsDownwards = NameOf(entry) == "KorBGRAToI444UsingBT709";
    py::list views;
    for (std::size_t i = 0; i < layout.count; ++i) {
        const kit::PlaneUse& use = layout.planes[i];
        const std::size_t rows = use.shape.rows + use.shape.spareRows;
        const std::size_t bytes = use.shape.rowBytes + use.shape.spareColumns;
        const bool write = use.access != kit::Access::Read;
        std::uint8_t* first = planes[i].data;
        auto stride = static_cast<std::ptrdiff_t>(planes[i].pitch);
        if (!write && rows > 0 && options.flip != 0) {
            first += (options.height - 1) * planes[i].pitch;
            stride = flipsDownwards ? stride : -stride;
        } else if (!write && rows > 0 && options.walk == kit::Walk::Up) {
            first += (rows - 1) * planes[i].pitch;
            stride = -stride;
        }
        views.append(View(first, rows, bytes, stride, write));
    }
    return views;
}

// Whether rows leave their places, as they do at the odd widths that no shape of an array can describe.
bool Drifts(const kit::Entry& entry, const kit::Case& options) {
    const kit::Layout layout = kit::LayOut(entry, options);
    return std::any_of(layout.planes.begin(), layout.planes.begin() + static_cast<std::ptrdiff_t>(layout.count),
                       [](const kit::PlaneUse& use) { return use.shape.drifts; });
}

// Makes the digests with calls of a function of Python, which returns whether it took the case. What drifts it refuses,
// and the library is called directly. Returns the digests that differ from the manifest, and the number of calls of
// either kind.
py::tuple Verify(const py::function& call) {
    std::size_t byPython = 0;
    std::size_t direct = 0;
    const auto run = [&](const kit::Entry& entry, const kit::PlaneView* planes, const kit::Case& options) {
        py::object matrix = py::none();
        if (options.matrix != nullptr) {
            Coefficients rows;
            for (std::size_t i = 0; i < 3; ++i) {
                std::copy(options.matrix->rows[i], options.matrix->rows[i] + 3, rows[i].begin());
            }
            matrix = py::cast(rows);
        }
        const py::object taken =
            call(NameOf(entry), ViewPlanes(entry, planes, options), options.width, options.height,
                 py::arg("angle") = options.rotationDegree,
                 py::arg("level") = static_cast<KorUint>(options.ditherLevel), py::arg("matrix") = matrix,
                 py::arg("randomize") = options.randomizeNoiseOffsets != 0, py::arg("in_place") = options.inPlace,
                 py::arg("at") = Position{options.xPosition, options.yPosition}, py::arg("alpha") = options.alpha);
        if (taken.cast<bool>()) {
            ++byPython;
        } else if (Drifts(entry, options)) {
            ++direct;
            kit::Call(entry.of(kit::DispatchedTable()), planes, options);
        } else {
            throw std::runtime_error(NameOf(entry) + ": refused " + kit::Describe(options));
        }
    };
    const std::vector<kit::Digest> expected = kit::ReadManifest(kit::kDigestManifest);
    const std::vector<kit::Digest> found = kit::MakeDigests(run);
    return py::make_tuple(kit::CompareDigests(expected, found), expected.size(), byPython, direct);
}

std::vector<std::string> Functions() {
    std::vector<std::string> names;
    for (const kit::Entry& entry : kit::Catalogue()) {
        names.push_back(NameOf(entry));
    }
    return names;
}

}  // namespace

PYBIND11_MODULE(_kor, module) {
    module.doc() = "The library's functions as one checked call; use the package kor instead.";
    module.attr("__version__") = KOR_PYTHON_VERSION;
    module.def("run", &Run, py::arg("function"), py::arg("planes"), py::arg("width"), py::arg("height"), py::kw_only(),
               py::arg("angle") = 0, py::arg("level") = 0, py::arg("matrix") = py::none(),
               py::arg("starts") = py::none(), py::arg("randomize") = false, py::arg("in_place") = false,
               py::arg("at") = Position{0, 0}, py::arg("alpha") = 0);
    module.def("functions", &Functions);
    module.def("target", &KorYuv420Target);
    module.def("targets", &Targets);
    module.def("select_target", &SelectTarget, py::arg("name"));
    module.def("verify", &Verify, py::arg("call"));
}
