// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "tensor_array.h"

#include "failure.h"
#include "image_io.h"
#include "npy_header.h"
#include "printable.h"

namespace oxcv {

namespace {

constexpr std::string_view arrayKind = "npy";
constexpr std::string_view rawKind = "raw";

std::string typeOf(ox::TensorDataType type) {
    switch (type) {
        case ox::TENSOR_UINT_8:
            return "|u1";
        case ox::TENSOR_INT_8:
            return "|i1";
        case ox::TENSOR_FLOAT_16:
            return "<f2";
        default:
            return "<f4";
    }
}

}  // namespace

TensorArray::TensorArray(OutputFile& file, ox::TensorLayout const& one, bool has_header)
    : _file(file), _one(one), _has_header(has_header) {}

void TensorArray::write(ox::Tensor const& picture) {
    if (needsCount() && _written >= _expected.value_or(0)) {
        throw Failure(_file.name() +
                      ": can't seek back to note how many pictures there are; --frames N says it, "
                      "--raw leaves it out");
    }
    if (_has_header && _written == 0) {
        std::string const bytes = header(_expected.value_or(1));
        static_cast<void>(_file.write(bytes.data(), bytes.size()));  // checked below
    }
    static_cast<void>(_file.write(picture.data(), _one.totalBytes()));
    _file.check();
    ++_written;
}

void TensorArray::finish() {
    if (!_has_header || _written == _expected) {
        return;
    }
    if (!_file.seekable()) {
        throw Failure(_file.name() + ": " + std::to_string(_expected.value_or(0)) +
                      " frames were announced, but there are " + std::to_string(_written));
    }
    std::string const bytes = header(_written);
    _file.patch(0, bytes.data(), bytes.size());
}

std::string TensorArray::header(std::int64_t pictures) const {
    std::int32_t const(&sides)[4] = _one.size().values;
    return makeNpyHeader({typeOf(_one.dataType()), {pictures, sides[1], sides[2], sides[3]}});
}

void checkArrayName(std::string const& path, bool has_header) {
    std::string const name = displayName(path, "standard output");
    if (path == "-" || !findTarget(path, name).replaced) {
        return;
    }
    FileKind const* const kind = kindByEnding(path);
    if (has_header && (kind == nullptr || kind->name != arrayKind)) {
        throw UsageError(name + ": the array's name must end with .npy, or --raw be given");
    }
    if (!has_header && kind != nullptr && kind->name != rawKind) {
        throw UsageError(name + ": --raw doesn't make a file of kind " + std::string(kind->name));
    }
}

}  // namespace oxcv
