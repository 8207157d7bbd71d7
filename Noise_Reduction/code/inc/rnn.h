// Records of the denoiser's recurrent network: constant layer descriptions,
// the model that strings them together, and the per-instance state and
// scratch that live in the caller's working buffer.
#ifndef ZEB_NR_RNN_H
#define ZEB_NR_RNN_H

#ifdef __cplusplus
extern "C" {
#endif

// Weights are stored as value * 256 in signed bytes.
typedef signed char rnn_weight;

#define ACTIVATION_TANH 0
#define ACTIVATION_SIGMOID 1
#define ACTIVATION_RELU 2

// Units of the three recurrent stages.
#define RNN_VAD_GRU_UNITS 24
#define RNN_NOISE_GRU_UNITS 48
#define RNN_DENOISE_GRU_UNITS 96
// Layer scratch: one gate vector per GRU (the widest stage fits), and the
// concatenated inputs of the two wider stages.
#define RNN_LAYER_SCRATCH_FLOATS 128
#define RNN_STAGE_INPUT_FLOATS 384

typedef struct {
  const rnn_weight* bias;
  const rnn_weight* input_weights;
  int nb_inputs;
  int nb_neurons;
  int activation;
} DenseLayer;

typedef struct {
  const rnn_weight* bias;
  const rnn_weight* input_weights;
  const rnn_weight* recurrent_weights;
  int nb_inputs;
  int nb_neurons;
  int activation;
} GRULayer;

typedef struct {
  int input_dense_size;
  const DenseLayer* input_dense;
  int vad_gru_size;
  const GRULayer* vad_gru;
  int noise_gru_size;
  const GRULayer* noise_gru;
  int denoise_gru_size;
  const GRULayer* denoise_gru;
  int denoise_output_size;
  const DenseLayer* denoise_output;
  int vad_output_size;              // 0: the network has no VAD head
  const DenseLayer* vad_output;     // null
} RNNModel;

// Recurrent state vectors of one instance.
typedef struct {
  float vad_gru_state_buff[RNN_VAD_GRU_UNITS];
  float noise_gru_state_buff[RNN_NOISE_GRU_UNITS];
  float denoise_gru_state_buff[RNN_DENOISE_GRU_UNITS];
} GRUState;

// Layer scratch of one instance; not cleared between frames.
typedef struct {
  float z[RNN_LAYER_SCRATCH_FLOATS];
  float r[RNN_LAYER_SCRATCH_FLOATS];
  float h[RNN_LAYER_SCRATCH_FLOATS];
  float dense_out[RNN_LAYER_SCRATCH_FLOATS];
  float noise_input[RNN_STAGE_INPUT_FLOATS];
  float denoise_input[RNN_STAGE_INPUT_FLOATS];
} NNLayerState;

// The model in use and where its state vectors lie (inside a GRUState).
typedef struct {
  const RNNModel* model;
  float* vad_gru_state;
  float* noise_gru_state;
  float* denoise_gru_state;
} RNNState;

#ifdef __cplusplus
}
#endif

#endif
