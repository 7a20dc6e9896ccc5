// Stand-in for macOS <CommonCrypto/CommonDigest.h>: SHA-256.
#pragma once
#include <stdint.h>

#define CC_SHA256_DIGEST_LENGTH 32
#define CC_SHA256_BLOCK_BYTES 64
typedef uint32_t CC_LONG;

typedef struct CC_SHA256state_st {
  CC_LONG count[2];
  CC_LONG hash[8];
  CC_LONG wbuf[16];
} CC_SHA256_CTX;

extern "C" {
int CC_SHA256_Init(CC_SHA256_CTX* c);
int CC_SHA256_Update(CC_SHA256_CTX* c, const void* data, CC_LONG len);
int CC_SHA256_Final(unsigned char* md, CC_SHA256_CTX* c);
unsigned char* CC_SHA256(const void* data, CC_LONG len, unsigned char* md);
}
