// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Makes one tensor of all pictures of a folder, on all cores.
///
///     batch_folder photos/ batch.f32     # each *.ppm of the folder
///     batch_folder                       # eight pictures that it makes itself
///
/// Pictures are of the PPM kind (P6, 8 bits) here: your own decoder takes the place of
/// `readPicture`.

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "ox_cv/ox_cv.h"

namespace {

namespace fs = std::filesystem;

ox::Frame readPicture(fs::path const& path) {
    std::ifstream file(path, std::ios::binary);
    std::string kind;
    ox::Size size;
    int white = 0;
    file >> kind >> size.width >> size.height >> white;
    file.get();  // the byte before the pixels
    if (!file || kind != "P6" || white != 255 || size.empty()) {
        throw std::runtime_error(path.string() + ": not a PPM picture");
    }
    ox::Frame picture;
    picture.reuse(ox::FRAME_RGB24, size, ox::DeviceContext(), 0);
    ox::FramePlane const& plane = picture.layout().plane[0];
    for (std::int64_t y = 0; y < size.height; ++y) {
        file.read(reinterpret_cast<char*>(picture.planeData(0) + y * plane.stride),
                  static_cast<std::streamsize>(plane.rowBytes));
    }
    if (!file) {
        throw std::runtime_error(path.string() + ": ends early");
    }
    return picture;
}

ox::TensorRecipe classifierRecipe() {
    ox::TensorRecipe recipe;
    recipe.width = recipe.height = 224;
    recipe.fit = ox::TENSOR_FIT_CROP;
    std::fill_n(recipe.scale, 3, 1.0F / 255.0F);
    return recipe;
}

// [batch]
/// Threads take the next picture until none is left. Each has a FrameToTensor of its own; all write
/// into one tensor, each picture to its own place.
ox::Tensor fillBatch(std::vector<fs::path> const& paths, ox::TensorRecipe const& recipe) {
    ox::FrameToTensor first;
    first.reuse(recipe);
    ox::Tensor batch;
    batch.reuse(first.layout(static_cast<int>(paths.size())), ox::DeviceContext::cpuContext());

    std::atomic<std::size_t> taken{0};
    std::exception_ptr failure;
    std::mutex failing;
    auto const work = [&] {
        try {
            ox::FrameToTensor to_tensor;
            to_tensor.reuse(recipe);
            for (std::size_t i = taken++; i < paths.size(); i = taken++) {
                to_tensor.run(readPicture(paths[i]), ox::Rect{}, batch, static_cast<int>(i));
            }
        } catch (...) {
            std::lock_guard<std::mutex> const lock(failing);
            failure = std::current_exception();
            taken = paths.size();  // the others stop as well
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i) {
        threads.emplace_back(work);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
    return batch;
}
// [batch]

std::vector<fs::path> picturesOf(fs::path const& folder) {
    std::vector<fs::path> paths;
    for (fs::directory_entry const& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ".ppm") {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

/// A folder of eight gray pictures, each of another size and lighter than the one before. It goes
/// with the object.
class Sample {
  public:
    Sample() {
        std::string name = (fs::temp_directory_path() / "batch_folder.XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("there is no room for a folder");
        }
        _folder = name;
        for (int i = 0; i < 8; ++i) {
            int const width = 300 + 20 * i;
            std::ofstream file(_folder / (std::to_string(i) + ".ppm"), std::ios::binary);
            file << "P6\n" << width << " 240\n255\n";
            file << std::string(static_cast<std::size_t>(3 * 240 * width),
                                static_cast<char>(10 * i));
        }
    }
    Sample(Sample const&) = delete;
    Sample& operator=(Sample const&) = delete;
    ~Sample() {
        std::error_code ignored;
        fs::remove_all(_folder, ignored);
    }

    fs::path const& folder() const { return _folder; }

  private:
    fs::path _folder;
};

/// The last picture's first number, from 0 to 1, tells that each lies where it belongs.
void showSample() {
    Sample const sample;
    ox::Tensor const batch = fillBatch(picturesOf(sample.folder()), classifierRecipe());
    auto const* const numbers = reinterpret_cast<float const*>(batch.data());
    std::printf("%d pictures, the last %.4f\n", batch.layout().size().values[0],
                static_cast<double>(numbers[std::size_t{7} * 3 * 224 * 224]));
}

void writeBatch(fs::path const& folder, fs::path const& target) {
    ox::Tensor const batch = fillBatch(picturesOf(folder), classifierRecipe());
    std::ofstream file(target, std::ios::binary);
    file.write(reinterpret_cast<char const*>(batch.data()),
               static_cast<std::streamsize>(batch.layout().totalBytes()));
    if (!file.flush()) {
        throw std::runtime_error(target.string() + ": can't be written");
    }
}

}  // namespace

int main(int count, char** arguments) try {
    if (count == 1) {
        showSample();
    } else if (count == 3) {
        writeBatch(arguments[1], arguments[2]);
    } else {
        std::fputs("usage: batch_folder [FOLDER batch.f32]\n", stderr);
        return 2;
    }
    return 0;
} catch (std::exception const& error) {
    std::fprintf(stderr, "batch_folder: %s\n", error.what());
    return 1;
}
