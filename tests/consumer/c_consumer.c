// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/* Uses the library from C99: links every function of the C interface and checks some bytes. */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "ox_cv/ox_cv_c.h"

static int failures = 0;

static void expect(int condition, char const* what) {
    if (!condition) {
        fprintf(stderr, "c_consumer: %s; last error: %s\n", what, ox_last_error());
        ++failures;
    }
}

static void taken(ox_status status, char const* what) {
    expect(status == OX_STATUS_OK, what);
}

/* [filter] */
static float box(void* context, float scale, float distance) {
    (void)context;
    return 2.0F * distance <= scale && -2.0F * distance <= scale ? 1.0F : 0.0F;
}

static float width_of_box(void* context, float scale) {
    (void)context;
    return scale;
}
/* [filter] */

static void check_frames(void) {
    unsigned char bytes[4 * 4];
    int64_t const stride = 4;
    void* plane = bytes;
    ox_rect const right = {2, 0, 2, 4};
    ox_frame* whole = NULL;
    ox_frame* part = NULL;
    ox_frame* copy = NULL;
    ox_frame_info info;
    memset(bytes, 9, sizeof bytes);
    taken(ox_frame_wrap(OX_FRAME_GRAY8, 4, 4, &plane, &stride, 1, &whole), "wrap");
    taken(ox_frame_region(whole, &right, &part), "region");
    taken(ox_frame_set_zero(part), "set_zero");
    expect(bytes[1] == 9 && bytes[2] == 0 && bytes[15] == 0, "a region of the caller's memory");
    taken(ox_frame_copy(part, &copy), "copy");
    taken(ox_frame_get_info(copy, &info), "get_info");
    expect(info.width == 2 && info.planes[0].data[0] == 0, "a copy");
    ox_frame_destroy(copy);
    ox_frame_destroy(part);
    ox_frame_destroy(whole);
}

static void check_backend(int32_t kind) {
    float const matrix[6] = {1, 0, 0, 0, 1, 0};
    ox_filter const filter = {OX_FILTER_CALLBACK, box, width_of_box, NULL};
    ox_backend* backend = NULL;
    ox_frame* gray = NULL;
    ox_frame* half = NULL;
    ox_frame* colour = NULL;
    ox_frame* floats = NULL;
    ox_frame* packed = NULL;
    ox_frame* warped = NULL;
    ox_frame_info info;
    int32_t method = -1;
    taken(ox_backend_create(kind, &backend), "backend");
    taken(ox_backend_set_property(backend, OX_PROPERTY_RESIZE_METHOD, OX_METHOD_AREA), "property");
    taken(ox_backend_get_property(backend, OX_PROPERTY_RESIZE_METHOD, &method), "property");
    expect(method == OX_METHOD_AREA, "method");
    taken(ox_frame_create(OX_FRAME_GRAY8, 8, 8, 0, &gray), "gray");
    taken(ox_frame_create(OX_FRAME_GRAY8, 4, 4, 0, &half), "half");
    taken(ox_frame_create(OX_FRAME_BGR24, 4, 4, 0, &colour), "colour");
    taken(ox_frame_create(OX_FRAME_GRAY_32F, 4, 4, 0, &floats), "floats");
    taken(ox_frame_create(OX_FRAME_YUYV, 4, 4, 0, &packed), "packed");
    taken(ox_frame_set_zero(gray), "zeros");
    taken(ox_frame_get_info(gray, &info), "info");
    info.planes[0].data[0] = 200;
    taken(ox_backend_resize(backend, gray, NULL, half, NULL), "resize");
    taken(ox_backend_convert_colour(backend, half, NULL, colour), "convert_colour");
    taken(ox_frame_get_info(colour, &info), "info");
    expect(info.planes[0].data[2] == 50, "area of 200, 0, 0, 0");
    taken(ox_backend_convert(backend, gray, NULL, colour), "convert");
    expect(info.planes[0].data[2] == 50, "area of 200, 0, 0, 0, in one");
    taken(ox_reduce(gray, NULL, half, &filter, OX_PRECISION_16), "reduce");
    taken(ox_frame_get_info(half, &info), "info");
    expect(info.planes[0].data[0] >= 49 && info.planes[0].data[0] <= 50, "a filter of C's");
    taken(ox_frame_set_zero(floats), "zeros");
    taken(ox_backend_add(backend, floats, NULL, 2.5F), "add");
    taken(ox_backend_multiply(backend, floats, NULL, 2.0F), "multiply");
    taken(ox_frame_get_info(floats, &info), "info");
    expect(memcmp(info.planes[0].data, &(float){5.0F}, sizeof(float)) == 0, "floats");
    taken(ox_frame_set_zero(packed), "zeros");
    taken(ox_backend_resize_packed_422(backend, packed, packed), "packed");
    taken(ox_frame_create(OX_FRAME_GRAY8, 8, 8, 0, &warped), "warped");
    expect(ox_backend_warp_affine(backend, gray, NULL, warped, matrix, 0) ==
               (kind == OX_BACKEND_SIMD ? OX_STATUS_OK : OX_STATUS_NOT_SUPPORTED),
           "warp");
    ox_frame_destroy(warped);
    ox_frame_destroy(gray);
    ox_frame_destroy(half);
    ox_frame_destroy(colour);
    ox_frame_destroy(floats);
    ox_frame_destroy(packed);
    ox_backend_destroy(backend);
}

static void check_tensor(void) {
    ox_recipe recipe;
    ox_to_tensor* to_tensor = NULL;
    ox_frame* frame = NULL;
    ox_tensor_info info;
    ox_mapping mapping;
    ox_point point = {2, 2};
    ox_box square = {0, 2, 4, 6};
    float numbers[8 * 8];
    taken(ox_recipe_init(&recipe, sizeof recipe), "recipe");
    recipe.width = recipe.height = 8;
    recipe.fit = OX_FIT_LETTERBOX;
    recipe.colour = OX_COLOUR_GRAY;
    recipe.bars[0] = 3;
    taken(ox_to_tensor_create(&recipe, &to_tensor), "to_tensor");
    taken(ox_to_tensor_get_info(to_tensor, 1, &info), "tensor info");
    expect(info.bytes == sizeof numbers, "bytes of the tensor");
    taken(ox_frame_create(OX_FRAME_NV12, 32, 16, 0, &frame), "nv12");
    taken(ox_frame_set_zero(frame), "zeros");
    taken(ox_to_tensor_run(to_tensor, frame, NULL, numbers, 0, 0, &mapping), "run");
    expect(numbers[0] == 3.0F && numbers[4 * 8] == 0.0F, "bars and picture");
    taken(ox_mapping_points_to_source(&mapping, &point, 1, &point), "points");
    expect(point.x == 8.0 && point.y == 0.0, "a point of the frame");
    taken(ox_mapping_points_to_input(&mapping, &point, 1, &point), "points");
    expect(point.x == 2.0 && point.y == 2.0, "there and back");
    taken(ox_mapping_boxes_to_source(&mapping, &square, 1, &square), "boxes");
    taken(ox_mapping_boxes_to_input(&mapping, &square, 1, &square), "boxes");
    expect(square.bottom == 6.0, "a box there and back");
    ox_frame_destroy(frame);
    ox_to_tensor_destroy(to_tensor);
}

static void check_similarity(void) {
    float const from[] = {0, 0, 1, 0};
    float const to[] = {5, 5, 5, 7};
    float matrix[6];
    taken(ox_fit_similarity(from, to, 2, matrix), "similarity");
    expect(matrix[1] == -2.0F && matrix[3] == 2.0F, "a quarter turn, twice as large");
}

int main(void) {
    expect(strcmp(ox_last_error(), "") == 0, "no failure at first");
    expect(ox_frame_set_zero(NULL) == OX_STATUS_NULL_POINTER, "null");
    expect(strcmp(ox_last_error(), "Parameter 'frame' is null.") == 0, "its text");
    expect(strcmp(ox_format_name(OX_FRAME_NV12), "FRAME_NV12") == 0, "a format's name");
    check_frames();
    check_backend(OX_BACKEND_SIMD);
    check_backend(OX_BACKEND_BASE);
    check_tensor();
    check_similarity();
    printf("c_consumer of %s: %s\n", ox_version(), failures == 0 ? "passed" : "FAILED");
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
