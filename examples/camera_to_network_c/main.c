// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/* Fills a network's input from a camera's frame in C, and carries a box of the network back to it.
 *
 *     camera_to_network_c                              # a gray frame of 1280x720
 *     camera_to_network_c 1920x1080 frame.nv12 > input.f32
 *
 * The input is what many detectors take: 3 x 640 x 640 floats from 0 to 1, in R,G,B, the picture
 * letterboxed with gray bars. With a file, the floats go to standard output. */

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "ox_cv/ox_cv_c.h"

/* The handles and the memory of a stream, null at first. */
typedef struct {
    ox_to_tensor* to_tensor;
    ox_tensor_info info;
    float* input;
} detector;

/* [open] */
static ox_status open_detector(detector* network) {
    ox_recipe recipe;
    ox_status status = ox_recipe_init(&recipe, sizeof recipe); /* R,G,B floats in planes */
    recipe.width = recipe.height = 640;
    recipe.fit = OX_FIT_LETTERBOX;
    for (int i = 0; i < 3; ++i) {
        recipe.bars[i] = 114;
        recipe.scale[i] = 1.0F / 255.0F;
    }
    if (status == OX_STATUS_OK) {
        status = ox_to_tensor_create(&recipe, &network->to_tensor);
    }
    if (status == OX_STATUS_OK) {
        status = ox_to_tensor_get_info(network->to_tensor, 1, &network->info);
    }
    network->input = malloc((size_t)network->info.bytes); /* null is refused later */
    return status;
}
/* [open] */

/* [close] */
static void close_detector(detector* network) {
    ox_to_tensor_destroy(network->to_tensor); /* null is fine */
    free(network->input);
}
/* [close] */

/* [run] */
/* Luma, then chroma pairs, without gaps; a driver's buffer would tell its strides. */
static ox_status run(detector* network, unsigned char* bytes, int32_t width, int32_t height,
                     ox_mapping* mapping) {
    void* planes[2];
    int64_t strides[2];
    ox_frame* camera = NULL;
    ox_status status;
    planes[0] = bytes;
    planes[1] = bytes + (size_t)width * (size_t)height;
    strides[0] = strides[1] = width;
    status = ox_frame_wrap(OX_FRAME_NV12, width, height, planes, strides, 2, &camera);
    if (status == OX_STATUS_OK) {
        status = ox_to_tensor_run(network->to_tensor, camera, NULL, network->input, 0, 0, mapping);
    }
    ox_frame_destroy(camera);
    return status;
}
/* [run] */

static void print(char const* what, ox_rect const* rect) {
    fprintf(stderr, "%s %dx%d at %d,%d\n", what, (int)rect->width, (int)rect->height, (int)rect->x,
            (int)rect->y);
}

static ox_status report(detector const* network, ox_mapping const* mapping) {
    /* [boxes] */
    ox_box const found = {300.0, 200.0, 340.0, 260.0}; /* a network's answer */
    ox_box box;
    ox_status const status = ox_mapping_boxes_to_source(mapping, &found, 1, &box);
    /* [boxes] */
    print("read", &mapping->source);
    print("put", &mapping->inner);
    fprintf(stderr, "box %g,%g to %g,%g\n", box.left, box.top, box.right, box.bottom);
    fprintf(stderr, "bar %.4f, middle %.4f\n", (double)network->input[0],
            (double)network->input[320 * 640 + 320]);
    return status;
}

/* A frame from the file, or a gray one without a file; null if there is none. */
static unsigned char* read_frame(char const* path, size_t bytes) {
    unsigned char* const frame = malloc(bytes);
    FILE* const file = path == NULL ? NULL : fopen(path, "rb");
    int complete = path == NULL;
    if (frame != NULL && path == NULL) {
        memset(frame, 128, bytes);
    }
    if (file != NULL) {
        complete = frame != NULL && fread(frame, 1, bytes, file) == bytes;
        fclose(file);
    }
    if (!complete) {
        free(frame);
        return NULL;
    }
    return frame;
}

static int process(detector* network, unsigned char* frame, int width, int height) {
    ox_mapping mapping;
    if (open_detector(network) != OX_STATUS_OK || /* kept over all frames of a stream */
        run(network, frame, width, height, &mapping) != OX_STATUS_OK || /* for each frame */
        report(network, &mapping) != OX_STATUS_OK) {
        fprintf(stderr, "%s\n", ox_last_error());
        return 1;
    }
    return 0;
}

int main(int count, char** arguments) {
    char const* const path = count == 3 ? arguments[2] : NULL;
    int width = 1280;
    int height = 720;
    int failed = 1;
    detector network = {NULL, {{0, 0, 0, 0}, {0, 0, 0, 0}, 0}, NULL};
    unsigned char* frame;
    if ((count != 1 && count != 3) ||
        (count == 3 && sscanf(arguments[1], "%dx%d", &width, &height) != 2) || width <= 0 ||
        height <= 0 || width % 2 != 0 || height % 2 != 0) {
        fputs("usage: camera_to_network_c [WIDTHxHEIGHT frame.nv12] > input.f32\n", stderr);
        return 2;
    }
    frame = read_frame(path, (size_t)width * (size_t)height / 2 * 3);
    if (frame == NULL) {
        fputs("there is no frame\n", stderr);
    } else {
        failed = process(&network, frame, width, height);
    }
    if (!failed && path != NULL) {
        fwrite(network.input, 1, (size_t)network.info.bytes, stdout);
    }
    close_detector(&network);
    free(frame);
    return failed;
}
