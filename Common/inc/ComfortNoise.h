// Comfort noise: shaped noise added to a spectrum to fill the holes that a
// noise suppressor leaves, and the white-noise helpers of the chain.
#ifndef ZEB_COMMON_COMFORTNOISE_H
#define ZEB_COMMON_COMFORTNOISE_H

#ifdef __cplusplus
extern "C" {
#endif

#define CNG_BINS 129  // bins of the 256-point spectrum

typedef struct cng_t_ {
  float dMinPow[CNG_BINS];           // per-bin noise power floor
  float comfort_noise_min_pwr;       // lower bound of a bin's power
  int comfort_noise_mul_left_shift;  // power-of-two scale of the noise; may be negative
} cng_t;

// Returns -1 for a NULL handle, else 0.
int ComfortNoise_Init(cng_t* handle, int length);
// In place on the packed spectrum of `length` real points (length + 2
// floats). `lambda` is not used; callers pass NULL.
void ComfortNoise_Process(float* input, const float* noisePow, const float* lambda, int length,
                          float NOISE_MIN_PWR, int NOISE_MUL_LEFT_SHIFT);

// The families' comfort-noise level: every bin of left's power floor gets
// the power of dB on the spectrum's scale, and in stereo right gets a copy.
// A NULL left (a buffer that never went through Init) is left alone.
void CNG_SetFloorDb(cng_t* left, cng_t* right, unsigned int channels, int dB);

float generate_random_noise(float min, float max);
float dbfs_to_amplitude(float dbfs);
void normalize_energy_dbfs(float* samples, unsigned int num_samples, float target_energy_dbfs);

#ifdef __cplusplus
}
#endif

#endif
