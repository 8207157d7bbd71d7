/*
 * Minimal client of the processing chain: size the working buffer,
 * initialise, configure and run a frame loop, then free.
 *
 * Usage: kol_frame_loop IN.raw OUT.raw [sample_rate] [channels]
 * IN.raw is headerless 16-bit little-endian PCM (interleaved when stereo);
 * OUT.raw receives the processed samples, delayed by one frame.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <zebaudio.h>

int main(int argc, char** argv) {
  if (argc < 3) {
    fprintf(stderr, "usage: %s IN.raw OUT.raw [sample_rate] [channels]\n", argv[0]);
    return 2;
  }
  AudioProcessInit init;
  init.point_number = ZEB_FRAME_LEN_SAMPLES;
  init.sample_rate = (ZEB_KOL_SAMPLE_RATE)(argc > 3 ? atoi(argv[3]) : 16000);
  init.channel = (unsigned int)(argc > 4 ? atoi(argv[4]) : 1);

  /* Reserve memory for the stages this client wants. */
  AudioKolBufferConfig stages;
  memset(&stages, 0, sizeof(stages));
  stages.anr_enable = 1;
  stages.eq_enable = 1;
  stages.agc_enable = 1;

  unsigned int size = ZebKol_GetBufferSize(&stages);
  void* work = malloc(size); /* malloc gives the pointer alignment required */
  if (work == NULL) return 1;
  KOL_HANDLE kol = ZebKol_Init((const char*)work, &init, &stages);
  if (kol == NULL) {
    fprintf(stderr, "ZebKol_Init failed\n");
    free(work);
    return 1;
  }

  /* Stage settings: all switched off here; a real client fills them in. */
  AudioAnrConfig anr;
  AudioEqConfig eq;
  AudioHpfConfig hpf;
  AudioAgcConfig agc;
  memset(&anr, 0, sizeof(anr));
  memset(&eq, 0, sizeof(eq));
  memset(&hpf, 0, sizeof(hpf));
  memset(&agc, 0, sizeof(agc));
  ALGO_KOL_RET ret = ZebKol_Config(kol, &anr, &eq, &hpf, NULL, NULL, &agc);
  if (ret != ALGO_KOL_RET_SUCCESS) {
    fprintf(stderr, "ZebKol_Config failed: 0x%x\n", (unsigned)ret);
    free(work);
    return 1;
  }

  FILE* in = fopen(argv[1], "rb");
  FILE* out = fopen(argv[2], "wb");
  if (in == NULL || out == NULL) {
    fprintf(stderr, "cannot open input or output file\n");
    if (in) fclose(in);
    if (out) fclose(out);
    ZebKol_Free(kol);
    free(work);
    return 1;
  }

  const size_t frameSamples = (size_t)init.point_number * init.channel;
  short frame[ZEB_FRAME_LEN_SAMPLES * ZEB_MAX_CHANNELS];
  size_t frames = 0;
  size_t got;
  while ((got = fread(frame, sizeof(short), frameSamples, in)) > 0) {
    if (got < frameSamples) memset(frame + got, 0, (frameSamples - got) * sizeof(short));
    ret = ZebKol_Run(kol, frame); /* in place */
    if (ret != ALGO_KOL_RET_SUCCESS) {
      fprintf(stderr, "ZebKol_Run failed at frame %zu: 0x%x\n", frames, (unsigned)ret);
      break;
    }
    fwrite(frame, sizeof(short), frameSamples, out);
    ++frames;
  }
  fclose(in);
  fclose(out);
  ZebKol_Free(kol);
  free(work);
  printf("processed %zu frames\n", frames);
  return ret == ALGO_KOL_RET_SUCCESS ? 0 : 1;
}
