meta:
  id: gq_records
  title: Records of the real-time database
  license: MIT
  endian: le
  imports: [gq_text]
doc: |
  A type for each record and for each list of records. The payload of a frame contains one of them; the database
  defines which. Bytes after a record or a list are ignored.
doc-ref: records.md
types:

  # --- Definitions ----------------------------------------------------------------------------------------------------

  point_info:
    seq:
      - {id: point_id, type: u4}
      - {id: text1, type: gq_text}
      - {id: code1, type: u4}
      - {id: text2, type: gq_text}
      - {id: code2, type: u4}
  float_point:
    seq:
      - {id: point_id, type: u4}
      - {id: text1, type: gq_text}
      - {id: code1, type: u4}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: text4, type: gq_text}
      - {id: code2, type: u4}
      - {id: code3, type: u4}
      - {id: code4, type: u4}
      - {id: text5, type: gq_text}
      - {id: switch1, type: u1}
      - {id: float1, type: f4}
      - {id: switch2, type: u1}
      - {id: code5, type: u4}
      - {id: code6, type: u4}
      - {id: float2, type: f4}
      - {id: code7, type: u4}
      - {id: levels, type: f4, repeat: expr, repeat-expr: 8}
  int_point:
    doc: The form that the library reads. int_point_written is the form that it writes.
    seq:
      - {id: point_id, type: u4}
      - {id: text1, type: gq_text}
      - {id: code1, type: u4}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: text4, type: gq_text}
      - {id: code2, type: u4}
      - {id: code3, type: u4}
      - {id: code4, type: u4}
      - {id: text5, type: gq_text}
      - {id: switch1, type: u1}
      - {id: switch2, type: u1}
      - {id: code5, type: u4}
      - {id: code6, type: u4}
      - {id: code7, type: u4}
      - {id: code8, type: u4}
      - {id: levels, type: s4, repeat: expr, repeat-expr: 8}
  int_point_written:
    seq:
      - {id: point_id, type: u4}
      - {id: text1, type: gq_text}
      - {id: code1, type: u4}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: text4, type: gq_text}
      - {id: code2, type: u4}
      - {id: code3, type: u4}
      - {id: switch0, type: u1}
      - {id: code4, type: u4}
      - {id: text5, type: gq_text}
      - {id: switch1, type: u1}
      - {id: switch2, type: u1}
      - {id: code5, type: u4}
      - {id: code6, type: u4}
      - {id: code7, type: u4}
      - {id: code8, type: u4}
      - {id: levels, type: s4, repeat: expr, repeat-expr: 8}
  bool_point:
    seq:
      - {id: point_id, type: u4}
      - {id: text1, type: gq_text}
      - {id: code1, type: u4}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: code2, type: u4}
      - {id: code3, type: u4}
      - {id: code4, type: u4}
      - {id: text5, type: gq_text}
      - {id: switch1, type: u1}
      - {id: switch2, type: u1}
      - {id: code5, type: u4}
      - {id: code6, type: u4}
      - {id: switch3, type: u1}
  blob_point:
    seq:
      - {id: point_id, type: u4}
      - {id: text1, type: gq_text}
      - {id: code1, type: u4}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: text4, type: gq_text}
      - {id: code2, type: u4}
      - {id: code3, type: u4}
      - {id: code4, type: u4}
      - {id: text5, type: gq_text}
      - {id: switch1, type: u1}
      - {id: switch2, type: u1}
      - {id: code5, type: u4}
      - {id: code6, type: u4}

  # --- Values ---------------------------------------------------------------------------------------------------------

  float_real_data:
    seq:
      - {id: point_id, type: u4}
      - {id: value, type: f4}
      - {id: stamp1, type: u4}
      - {id: stamp2, type: u4}
      - {id: flag2, type: u1, doc: Precedes flag1 in the two float records only.}
      - {id: flag1, type: u1}
  float_data:
    seq:
      - {id: value, type: f4}
      - {id: stamp1, type: u4}
      - {id: stamp2, type: u4}
      - {id: flag2, type: u1}
      - {id: flag1, type: u1}
  int_real_data:
    seq:
      - {id: point_id, type: u4}
      - {id: value, type: s4}
      - {id: stamp1, type: u4}
      - {id: stamp2, type: u4}
      - {id: flag1, type: u1}
      - {id: flag2, type: u1}
  int_data:
    seq:
      - {id: value, type: s4}
      - {id: stamp1, type: u4}
      - {id: stamp2, type: u4}
      - {id: flag1, type: u1}
      - {id: flag2, type: u1}
  bool_real_data:
    seq:
      - {id: point_id, type: u4}
      - {id: value, type: u1}
      - {id: stamp1, type: u4}
      - {id: stamp2, type: u4}
      - {id: flag1, type: u1}
  bool_data:
    seq:
      - {id: value, type: u1}
      - {id: stamp1, type: u4}
      - {id: stamp2, type: u4}
      - {id: flag1, type: u1}
  point_real_data:
    seq:
      - {id: point_kind, type: u1}
      - {id: point_id, type: u4}
      - {id: value, type: f8}
      - {id: int_value, type: u4}
      - {id: stamp1, type: u4}
      - {id: stamp2, type: u4}
      - {id: flag1, type: u1}
      - {id: flag2, type: u1}
  blob_data_info:
    seq:
      - {id: point_id, type: u4}
      - {id: stamp1, type: u4}
      - {id: stamp2, type: u4}
      - {id: word4, type: u4}
      - {id: flag1, type: u1}
      - {id: flag2, type: u1}
  blob_real_data:
    doc: The bytes can be a wave, which gq_wave describes.
    seq:
      - {id: point_id, type: u4}
      - {id: stamp1, type: u4}
      - {id: stamp2, type: u4}
      - {id: flag1, type: u1}
      - {id: flag2, type: u1}
      - {id: len_bytes, type: u4}
      - {id: bytes, size: len_bytes}
  blob_data:
    seq:
      - {id: stamp1, type: u4}
      - {id: stamp2, type: u4}
      - {id: flag1, type: u1}
      - {id: flag2, type: u1}
      - {id: len_bytes, type: u4}
      - {id: bytes, size: len_bytes}

  # --- Queries and events ---------------------------------------------------------------------------------------------

  his_query:
    seq:
      - {id: point_id, type: u4}
      - {id: word1, type: u4}
      - {id: word2, type: u4}
      - {id: word3, type: u4}
      - {id: word4, type: u4}
      - {id: word5, type: u4}
      - {id: word6, type: u4}
  one_sec_query:
    seq:
      - {id: point_id, type: u4}
      - {id: word1, type: u4}
      - {id: word2, type: u4}
      - {id: word3, type: u4}
      - {id: word4, type: u4}
      - {id: text1, type: gq_text}
  event_info:
    seq:
      - {id: word1, type: u4}
      - {id: word2, type: u4}
      - {id: word3, type: u4}
      - {id: word4, type: u4}
      - {id: switch1, type: u1}
      - {id: switch2, type: u1}
      - {id: word5, type: u4}
      - {id: value, type: f8}
      - {id: word6, type: u4}
      - {id: word7, type: u4}
      - {id: word8, type: u4}
      - {id: word9, type: u4}
      - {id: word10, type: u4}
      - {id: switch3, type: u1}
      - {id: word13, type: u4}
      - {id: text1, type: gq_text}
      - {id: text2, type: gq_text}
  event_state:
    seq:
      - {id: word1, type: u4}
      - {id: switch1, type: u1}
      - {id: word2, type: u4}
      - {id: word3, type: u4}
      - {id: word4, type: u4}

  # --- Objects, in the byte form and the blob form --------------------------------------------------------------------

  slot:
    doc: A text in the blob form, always 258 bytes.
    seq:
      - {id: len_bytes, type: u2, valid: {max: 256}}
      - {id: bytes, size: len_bytes}
      - {id: padding, size: 256 - len_bytes}
    instances:
      utf8: {value: bytes.to_s("UTF-8")}
  variant:
    doc: A kind without a member here has no value.
    seq:
      - {id: kind, type: u1}
      - {id: int_value, type: s4, if: kind == 0}
      - {id: float_value, type: f4, if: kind == 5}
      - {id: double_value, type: f8, if: kind == 6}
      - {id: text_value, type: gq_text, if: kind == 10}
      - {id: seconds, type: u4, if: kind == 11}
  variant_blob:
    seq:
      - {id: kind, type: u1}
      - {id: int_value, type: s4, if: kind == 0}
      - {id: float_value, type: f4, if: kind == 5}
      - {id: double_value, type: f8, if: kind == 6}
      - {id: text_value, type: slot, if: kind == 10}
      - {id: seconds, type: u4, if: kind == 11}
  property_data:
    seq:
      - {id: word1, type: s4}
      - {id: word2, type: s4}
      - {id: format_text, type: gq_text}
      - {id: value_text, type: gq_text}
      - {id: value, type: variant}
  property_data_blob:
    seq:
      - {id: word1, type: s4}
      - {id: word2, type: s4}
      - {id: format_text, type: slot}
      - {id: value_text, type: slot}
      - {id: value, type: variant_blob}
  object_data:
    seq:
      - {id: ignored, type: u1}
      - {id: word1, type: s4}
      - {id: word2, type: s4}
      - {id: word3, type: s4}
      - {id: word4, type: s4}
      - {id: text1, type: gq_text}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: property_count, type: u2}
      - {id: properties, type: property_data, repeat: expr, repeat-expr: property_count}
  object_data_blob:
    seq:
      - {id: ignored, type: u1}
      - {id: word1, type: s4}
      - {id: word2, type: s4}
      - {id: word3, type: s4}
      - {id: word4, type: s4}
      - {id: text1, type: slot}
      - {id: text2, type: slot}
      - {id: text3, type: slot}
      - {id: property_count, type: u2}
      - {id: properties, type: property_data_blob, repeat: expr, repeat-expr: property_count}

  # --- Lists ----------------------------------------------------------------------------------------------------------

  point_infos:
    seq:
      - {id: count, type: u4}
      - {id: items, type: point_info, repeat: expr, repeat-expr: count}
  float_points:
    seq:
      - {id: count, type: u4}
      - {id: items, type: float_point, repeat: expr, repeat-expr: count}
  int_points:
    seq:
      - {id: count, type: u4}
      - {id: items, type: int_point, repeat: expr, repeat-expr: count}
  int_points_written:
    seq:
      - {id: count, type: u4}
      - {id: items, type: int_point_written, repeat: expr, repeat-expr: count}
  bool_points:
    seq:
      - {id: count, type: u4}
      - {id: items, type: bool_point, repeat: expr, repeat-expr: count}
  blob_points:
    seq:
      - {id: count, type: u4}
      - {id: items, type: blob_point, repeat: expr, repeat-expr: count}
  float_real_datas:
    seq:
      - {id: count, type: u4}
      - {id: items, type: float_real_data, repeat: expr, repeat-expr: count}
  float_datas:
    seq:
      - {id: count, type: u4}
      - {id: items, type: float_data, repeat: expr, repeat-expr: count}
  int_real_datas:
    seq:
      - {id: count, type: u4}
      - {id: items, type: int_real_data, repeat: expr, repeat-expr: count}
  int_datas:
    seq:
      - {id: count, type: u4}
      - {id: items, type: int_data, repeat: expr, repeat-expr: count}
  bool_real_datas:
    seq:
      - {id: count, type: u4}
      - {id: items, type: bool_real_data, repeat: expr, repeat-expr: count}
  bool_datas:
    seq:
      - {id: count, type: u4}
      - {id: items, type: bool_data, repeat: expr, repeat-expr: count}
  point_real_datas:
    seq:
      - {id: count, type: u4}
      - {id: items, type: point_real_data, repeat: expr, repeat-expr: count}
  blob_data_infos:
    seq:
      - {id: count, type: u4}
      - {id: items, type: blob_data_info, repeat: expr, repeat-expr: count}
  blob_real_datas:
    seq:
      - {id: count, type: u4}
      - {id: items, type: blob_real_data, repeat: expr, repeat-expr: count}
  blob_datas:
    seq:
      - {id: count, type: u4}
      - {id: items, type: blob_data, repeat: expr, repeat-expr: count}
  event_infos:
    seq:
      - {id: count, type: u4}
      - {id: items, type: event_info, repeat: expr, repeat-expr: count}
  event_states:
    seq:
      - {id: count, type: u4}
      - {id: items, type: event_state, repeat: expr, repeat-expr: count}
