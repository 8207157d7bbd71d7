/* Compiles the public headers as strict C99 (and, with -x c++, as C++):
   a client written in plain C must see every record and call. */
#include <stddef.h>
#include <string.h>
#include <zebaudio.h>

/* Negative array size when a condition fails: C99 has no static_assert. */
#define C99_CHECK(name, cond) typedef char c99_check_##name[(cond) ? 1 : -1]

C99_CHECK(kol_failed, ALGO_KOL_RET_FAILED == 0x10000532);
C99_CHECK(anr_failed, ALGO_ANR_RET_FAILED == 14);
C99_CHECK(eq_failed, ALGO_EQ_RET_FAILED == 14);
C99_CHECK(agc_failed, ALGO_AGC_RET_FAILED == 19);
C99_CHECK(enum_is_int, sizeof(ALGO_KOL_RET) == 4);
C99_CHECK(eq_gains_last, offsetof(AudioEqConfig, eq_gain_db) == 8);
C99_CHECK(frame_len, ZEB_FRAME_LEN_SAMPLES == 128);

/* Each family's entry points, taken by address so that the prototypes are
   checked against the expected function types. */
unsigned int (*c99_kol_size)(AudioKolBufferConfig*) = ZebKol_GetBufferSize;
KOL_HANDLE (*c99_kol_init)(const char*, AudioProcessInit*, AudioKolBufferConfig*) = ZebKol_Init;
ALGO_KOL_RET (*c99_kol_run)(KOL_HANDLE, short*) = ZebKol_Run;
ALGO_KOL_RET (*c99_kol_cng)(CngStruct, short*) = ZebKol_ApplyComfortNoise;
ANR_HANDLE (*c99_anr_init)(char*, AudioAnrInit*) = ZebAnr_Init;
ALGO_ANR_RET (*c99_anr_run)(ANR_HANDLE, short*) = ZebAnr_Run;
EQ_HANDLE (*c99_eq_init)(char*, AudioEqInit*) = ZebEq_Init;
ALGO_EQ_RET (*c99_eq_freqz)(EQ_HANDLE, float*) = ZebEq_FilterFreqz;
AGC_HANDLE (*c99_agc_init)(char*, AudioAgcInit*) = ZebAgc_Init;
float (*c99_agc_process)(AGCinst_t*, short*) = AGC_Process;

/* A C client fills the records with plain brace initialisers. */
int c99_header_check_records(void);
int c99_header_check_records(void) {
  AudioProcessInit init = {ZEB_FRAME_LEN_SAMPLES, 2, ZEB_KOL_SAMPLE_RATE_16000};
  AudioKolBufferConfig sw = {1, 1, 0, 0, 1};
  AudioAnrConfig anr = {1, 1, {10, 20, 30, 40, 60, 90}, {10, 10, 10, 10, 10, 10, 10},
                        5, NR_SPEED_HIGH, 0};
  AudioHpfConfig hpf = {1, 1, AUDIO_HPF_FREQ_120};
  AudioFilterConfig filt = {EQ_NOTCH_FILTER, 1000, 2, -6};
  AudioAgcConfig agc;
  CngStruct cng = {-60, ZEB_FRAME_LEN_SAMPLES, 1};
  memset(&agc, 0, sizeof agc);
  agc.gain_info.gain_max = 30;
  return (int)init.channel + (int)sw.agc_enable + anr.anr_filter_mode +
         (int)hpf.cutoff_frequency + filt.f0 + agc.gain_info.gain_max + cng.channel_num;
}
