// The code of stb_image, which decodes PNG, JPEG, BMP, TGA, GIF, PSD, HDR, PIC and PNM.
#define STB_IMAGE_IMPLEMENTATION
#define STBI_NO_STDIO
#define STBI_FAILURE_USERMSG
#include <stb/stb_image.h>
