meta:
  id: gq_wave
  title: Stored wave
  license: MIT
  endian: le
doc-ref: wave.md
seq:
  - {id: head_byte, type: u1}
  - {id: wave_flags, type: u1}
  - {id: head_fill1, size: 30}
  - {id: limit_high, type: f8}
  - {id: limit_low, type: f8}
  - {id: sample_count, type: u4, doc: Readers ignore it and use the length of the sample block.}
  - id: mark_count
    type: u4
    valid: {expr: _ == 0 or _ <= (_io.size - 192) / 4}
    doc: At least 96 bytes must follow the marks.
  - {id: head_fill2, size: 40}
  - {id: marks, type: s4, repeat: expr, repeat-expr: mark_count}
  - {id: plain_block, type: sample_block, size-eos: true, if: not is_compressed}
  - {id: packed_block, type: sample_block, size-eos: true, process: zlib, if: is_compressed}
instances:
  is_raw: {value: (wave_flags & 1) != 0}
  is_quantised: {value: (wave_flags & 3) == 2}
  is_compressed: {value: (wave_flags & 4) != 0}
  len_sample: {value: '(wave_flags & 3) != 0 ? 2 : 4'}
  block:
    value: 'is_compressed ? packed_block : plain_block'
types:
  sample_block:
    seq:
      - {id: samples, type: sample, repeat: expr, repeat-expr: _io.size / _root.len_sample}
      - {id: ignored, size-eos: true}

  sample:
    seq:
      - {id: raw, type: s2, if: _root.is_raw}
      - {id: quantised, type: u2, if: _root.is_quantised}
      - {id: plain, type: f4, if: not _root.is_raw and not _root.is_quantised}
    instances:
      value:
        value: |
          _root.is_raw ? raw * _root.limit_high + _root.limit_low :
          _root.is_quantised ? quantised / 65535.0 * (_root.limit_high - _root.limit_low) + _root.limit_low :
          plain
        doc: The sample, without the rounding to single precision.
