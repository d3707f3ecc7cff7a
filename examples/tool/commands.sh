#!/usr/bin/env bash
# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# The commands of the documents, which the tests run in a folder of their own:
#     commands.sh FOLDER_OF_OXCV FOLDER_OF_PICTURES PROGRAM_STREAM_RESIZE
set -euo pipefail
export PATH="$1:$PATH"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp "$2/chelsea.png" "$scratch/photo.png"
cp "$2/rocket.jpg" "$scratch/photo.jpg"
cd "$scratch"
mkdir photos
cp photo.jpg photos/one.jpg
cp photo.jpg photos/two.jpg
camera() { head -c $((3 * 1920 * 1080 * 3 / 2)) /dev/zero; }
encoder() { cat >/dev/null; }
head -c $((1920 * 1080 * 3 / 2)) /dev/zero >frame.nv12

# [convert]
oxcv convert photo.jpg small.png --size 320x              # resize, keeping the aspect
oxcv convert photo.jpg thumb.png --size 96x --kernel lanczos3   # reduce by a filter
oxcv convert photo.jpg level.png --rotate -2.5            # about the middle; --warp takes a matrix
oxcv convert photo.png part.nv12 --format NV12 --size 1280x720 --fit crop   # raw frames
oxcv convert photo.jpg boxed.png --size 640x640 --fit letterbox --bars 114
camera | oxcv convert - - --input-format NV12 --input-size 1920x1080 --size 640x | encoder
oxcv formats                                              # what goes where
# [convert]
oxcv convert - clip.y4m --input-format NV12 --input-size 1920x1080 --size 320x < <(camera)

# [tensor]
oxcv tensor photo.jpg input.npy --recipe imagenet         # 1 x 3 x 224 x 224 floats
oxcv tensor photos/*.jpg batch.npy --recipe yolo --mapping map.json --jobs 4   # N x 3 x 640 x 640
oxcv tensor clip.y4m clip.npy --size 300x300 --type u8 --layout nhwc    # a picture for each frame
oxcv tensor frame.nv12 frame.npy --input-size 1920x1080 --recipe yolo --matrix bt709
oxcv recipes                                              # the options that each stands for
# [tensor]

cat >boxes.py <<'END'
import json
box_x, i = 320, 0
# [mapping]
maps = json.load(open("map.json"))       # one for each picture of batch.npy
(x0, y0, w, h), (left, top, inner_w, inner_h) = maps[i]["source"], maps[i]["inner"]
x = x0 + (box_x - left) * w / inner_w    # in the file maps[i]["file"]; y alike
# [mapping]
assert x == 320, x
END
python3 boxes.py

# Rows that come through a pipe give the bytes of a whole picture.
as_rows=(--output-kind raw --format BGR24)
oxcv convert photo.jpg rows.bgr "${as_rows[@]}"
oxcv convert photo.jpg whole.bgr "${as_rows[@]}" --size 160x107 --method area --backend base
"$3" 640x427 160x107 <rows.bgr | cmp - whole.bgr
