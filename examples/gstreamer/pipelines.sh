#!/usr/bin/env bash
# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# The pipelines of docs/interop.md, in a folder of their own. The arguments are the folders of the
# plugin and of the pictures.
set -euo pipefail
export GST_PLUGIN_PATH=$1
photo=$2/rocket.jpg
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export GST_REGISTRY=$folder/registry
cp "$photo" photo.jpg

# [test]
gst-launch-1.0 videotestsrc num-buffers=30 ! video/x-raw,format=NV12,width=1920,height=1080 ! \
    oxconvertscale ! video/x-raw,format=BGR,width=640 ! fakesink
# [test]
# [photo]
gst-launch-1.0 filesrc location=photo.jpg ! jpegdec ! \
    oxconvertscale left=100 right=100 filter=lanczos3 width=320 ! pngenc ! filesink location=small.png
# [photo]
test -s small.png
