meta:
  id: gq_front_end_records
  title: Records of front-end processors
  license: MIT
  endian: le
  imports: [gq_text]
doc: |
  A type for each record and for each list of records. The payload of a frame contains one of them; the applications
  define which. Bytes after a record or a list are ignored.
doc-ref: frontEndRecords.md
types:

  # --- Nodes and communication ----------------------------------------------------------------------------------------

  node_head:
    seq:
      - {id: node_id, type: s4}
      - {id: text1, type: gq_text}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: text4, type: gq_text}
      - {id: word1, type: s4}
      - {id: flag1, type: u1}
      - {id: flag2, type: u1}
      - {id: flag3, type: u1}
      - {id: flag4, type: u1}
      - {id: word2, type: s4}
      - {id: word3, type: s4}
      - {id: word4, type: s4}
      - {id: word5, type: s4}
      - {id: text5, type: gq_text}
      - {id: text6, type: gq_text}
  comm_item:
    doc: The library reads it only with certain bytes after it, which frontEndRecords.md describes.
    seq:
      - {id: comm_id, type: s4}
      - {id: text1, type: gq_text}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: flag1, type: u1}
      - {id: flag2, type: u1}
      - {id: text4, type: gq_text}
      - {id: word1, type: s4}
      - {id: text5, type: gq_text}

  # --- Telemetry items ------------------------------------------------------------------------------------------------

  yc_item:
    seq:
      - {id: flag1, type: u1}
      - {id: item_id, type: s4}
      - {id: text1, type: gq_text}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: text4, type: gq_text}
      - {id: flag2, type: u1}
      - {id: word1, type: s4}
      - {id: word2, type: s4}
      - {id: flag3, type: u1}
      - {id: coef1, type: f4}
      - {id: coef2, type: f4}
      - {id: coef3, type: f4}
      - {id: coef4, type: f4}
      - {id: word3, type: s4}
      - {id: flag4, type: u1}
      - {id: flag5, type: u1}
      - {id: text5, type: gq_text}
  yx_item:
    seq:
      - {id: item_id, type: s4}
      - {id: text1, type: gq_text}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: flag1, type: u1}
      - {id: word1, type: s4}
      - {id: word2, type: s4}
      - {id: flag2, type: u1}
      - {id: word3, type: s4}
      - {id: flag3, type: u1}
      - {id: flag4, type: u1}
      - {id: flag5, type: u1}
      - {id: flag6, type: u1}
      - {id: text4, type: gq_text}
  yd_item:
    seq:
      - {id: flag1, type: u1}
      - {id: item_id, type: s4}
      - {id: text1, type: gq_text}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: text4, type: gq_text}
      - {id: flag2, type: u1}
      - {id: flag3, type: u1}
      - {id: word1, type: s4}
      - {id: word2, type: s4}
      - {id: flag4, type: u1}
      - {id: flag5, type: u1}
      - {id: flag6, type: u1}
      - {id: flag7, type: u1}
      - {id: float1, type: f4}
      - {id: float2, type: f4}
      - {id: word3, type: s4}
      - {id: float3, type: f4}
      - {id: float4, type: f4}
      - {id: word4, type: s4}
      - {id: word5, type: s4}
      - {id: text5, type: gq_text}
  yb_item:
    doc: The form that the library reads. yb_item_written is the form that it writes.
    seq:
      - {id: item_id, type: s4}
      - {id: text1, type: gq_text}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: word1, type: s4}
      - {id: word2, type: s4}
      - {id: flag2, type: u1}
      - {id: text4, type: gq_text}
  yb_item_written:
    seq:
      - {id: item_id, type: s4}
      - {id: text1, type: gq_text}
      - {id: text2, type: gq_text}
      - {id: text3, type: gq_text}
      - {id: flag1, type: u1}
      - {id: word1, type: s4}
      - {id: word2, type: s4}
      - {id: flag2, type: u1}
      - {id: text4, type: gq_text}

  # --- Lists ----------------------------------------------------------------------------------------------------------

  node_heads:
    seq:
      - {id: count, type: u4}
      - {id: items, type: node_head, repeat: expr, repeat-expr: count}
  comm_items:
    seq:
      - {id: count, type: u4}
      - {id: items, type: comm_item, repeat: expr, repeat-expr: count}
  yc_items:
    seq:
      - {id: count, type: u4}
      - {id: items, type: yc_item, repeat: expr, repeat-expr: count}
  yx_items:
    seq:
      - {id: count, type: u4}
      - {id: items, type: yx_item, repeat: expr, repeat-expr: count}
  yd_items:
    seq:
      - {id: count, type: u4}
      - {id: items, type: yd_item, repeat: expr, repeat-expr: count}
  yb_items:
    seq:
      - {id: count, type: u4}
      - {id: items, type: yb_item, repeat: expr, repeat-expr: count}
  yb_items_written:
    seq:
      - {id: count, type: u4}
      - {id: items, type: yb_item_written, repeat: expr, repeat-expr: count}
