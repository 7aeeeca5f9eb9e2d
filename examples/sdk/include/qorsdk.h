/* qorSDK: access to the cameras, which are simulated. A camera is used by one thread at a time. */
#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct QorCamera QorCamera;

typedef enum QorError {
    QOR_OK = 0,
    QOR_NO_CAMERA = 1,
    QOR_BUFFER_TOO_SMALL = 2,
    QOR_NO_FRAME = 3,
    QOR_WRITE_FAILED = 4
} QorError;

/* English text, owned by the library. */
const char* qorErrorText(QorError error);

const char* qorVersion(void);

/* The cameras are numbered from 0. */
int qorCameraCount(void);

/* On success the caller owns *camera and ends it with qorClose; on failure *camera is null. */
QorError qorOpen(int index, QorCamera** camera);

/* Ignores null. */
void qorClose(QorCamera* camera);

/* The texts live as long as the camera. */
const char* qorName(const QorCamera* camera);
const char* qorSerial(const QorCamera* camera);

int qorWidth(const QorCamera* camera);
int qorHeight(const QorCamera* camera);

/* Copies the next frame, width * height bytes of 8-bit mono, into pixels, which holds size bytes.
   A buffer that is too small stays as it is and the frame is kept for the next call. */
QorError qorGrab(QorCamera* camera, unsigned char* pixels, size_t size);

/* Writes the frame grabbed last as a PGM file; path is UTF-8. */
QorError qorSave(const QorCamera* camera, const char* path);

#ifdef __cplusplus
}
#endif
